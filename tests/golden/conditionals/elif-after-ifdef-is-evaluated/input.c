#ifdef X
a
#elif defined Y
b
#endif
