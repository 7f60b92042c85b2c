#define S(x) #x
S(a		b
c/**/d \
 e // f
)
z
