#undef __FILE__
#undef __LINE__
__FILE__ __LINE__
