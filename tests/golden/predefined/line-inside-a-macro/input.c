#define HERE <__LINE__>

HERE HERE
HERE
