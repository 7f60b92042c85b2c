#define A B
defined A defined(A)
