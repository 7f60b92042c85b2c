
__FILE__ __LINE__
