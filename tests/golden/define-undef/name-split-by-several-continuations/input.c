#define A\
\
B\
C 1
ABC
