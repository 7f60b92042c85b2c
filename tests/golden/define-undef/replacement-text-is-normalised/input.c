#define X   a    b   
#define X a b
[X]
#define X ab
[X]
