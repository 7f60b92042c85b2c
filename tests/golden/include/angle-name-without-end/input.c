#include <a.h
> y
