X
#undef X
X
