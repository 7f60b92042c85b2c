#define caf Z
café "café" �
