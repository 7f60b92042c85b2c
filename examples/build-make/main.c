#include <stdio.h>

#include "messages.h"

int main(void) {
  for (int i = 0; i < message_count; ++i) puts(messages[i]);
  return 0;
}
