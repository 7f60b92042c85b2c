#if 1
