#if (1u && 1) - 2 > 0 && (0 || 1u) - 2 > 0 && !0u - 2 > 0
yes
#else
no
#endif
