#define COLOURS X(red) X(green) X(blue)
#define X(n) n,
enum { COLOURS };
#undef X
#define X(n) #n,
char *names[] = { COLOURS };
