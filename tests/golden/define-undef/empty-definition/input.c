#define E
[E]
#define E // nothing
#define E 0
[E]
