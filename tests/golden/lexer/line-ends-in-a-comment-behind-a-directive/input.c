#define A 1 /* c
*/
A
