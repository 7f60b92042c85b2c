#include <stdio.h>

#include "units.h"

extern const struct unit units[];
extern const int unit_count;

int main(void) {
  for (int i = 0; i < unit_count; ++i) printf("%s %ld\n", units[i].name, units[i].length);
  return 0;
}
