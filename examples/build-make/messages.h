enum message {
#define MESSAGE(name, english, german) name,
#include "messages.def"
#undef MESSAGE
  message_count
};
extern const char *const messages[];
