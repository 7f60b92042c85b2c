#define E
 E
x
