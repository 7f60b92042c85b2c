#undef __FILE__
__FILE__
#define __FILE__ mine
__FILE__
#define __FILE__ "input.c"
#define __FILE__ mine
__FILE__
