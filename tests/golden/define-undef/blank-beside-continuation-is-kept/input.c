#define A a \
b
#define B a\
 b
#define C a \
 b
[A] [B] [C]
