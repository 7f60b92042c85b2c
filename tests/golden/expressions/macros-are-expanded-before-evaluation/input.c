#define ADD(a,b) a+b
#define TWO 2
#if ADD(1,TWO)*TWO == 5
yes
#endif
