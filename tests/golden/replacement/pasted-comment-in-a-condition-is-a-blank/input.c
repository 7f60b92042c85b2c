#define C(a,b) a##b
#if C(1 /,* c */) == 1
yes
#else
no
#endif
