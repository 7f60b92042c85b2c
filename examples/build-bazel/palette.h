#ifdef DARK
#define TEXT #eee
#define BACKGROUND #222
#else
#define TEXT #222
#define BACKGROUND #eee
#endif
#define LINK teal
