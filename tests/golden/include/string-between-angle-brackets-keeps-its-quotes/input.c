#include <__FILE__>
