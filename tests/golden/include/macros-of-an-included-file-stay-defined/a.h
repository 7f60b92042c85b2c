#define V 5
