# line/* a */10 /* b */ "x.c"  // c
a
