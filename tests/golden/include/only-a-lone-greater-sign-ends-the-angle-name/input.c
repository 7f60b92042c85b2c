#include <a>=b>
#include <a>>
#include <a>>b>
