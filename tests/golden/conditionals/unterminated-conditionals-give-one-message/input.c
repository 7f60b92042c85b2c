#if 1
#ifdef X
#ifndef Y
a
