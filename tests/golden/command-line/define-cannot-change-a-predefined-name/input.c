__LINE__ __FILE__
