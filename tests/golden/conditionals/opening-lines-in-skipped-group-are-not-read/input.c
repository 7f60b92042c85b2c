#if 0
#if garbage( 1/0
#endif
#ifdef
#endif
#ifndef X junk
#endif
#endif
z
