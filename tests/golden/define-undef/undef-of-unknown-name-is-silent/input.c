#undef NOPE
#undef NOPE
x
