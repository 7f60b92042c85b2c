#if 1L && 1l && 1U && 1u && 1UL && 1Ul && 1uL && 1ul && 1LU && 1Lu && 1lU && 1lu
yes
#endif
#if 07L && 07l && 07U && 07u && 07UL && 07Ul && 07uL && 07ul && 07LU && 07Lu && 07lU && 07lu
yes
#endif
#if 0xFL && 0xFl && 0xFU && 0xFu && 0xFUL && 0xFUl && 0xFuL && 0xFul && 0xFLU && 0xFLu && 0xFlU && 0xFlu
yes
#endif
#if 0XaFL && 0XaFl && 0XaFU && 0XaFu && 0XaFUL && 0XaFUl && 0XaFuL && 0XaFul && 0XaFLU && 0XaFLu && 0XaFlU && 0XaFlu
yes
#endif
