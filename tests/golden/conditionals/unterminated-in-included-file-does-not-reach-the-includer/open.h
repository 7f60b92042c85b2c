#if 0
skipped
