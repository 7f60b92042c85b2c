#include
#include a.h
#include 'a.h'
#include L"a.h"
#include "a.h
#include 12
#include NOTHING
y
