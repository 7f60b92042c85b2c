#include ""
#include <>
#include "" junk
#include <> junk
#define E ""
#include E
y
