#define if 1
#define include 2
#define ident 3
if include ident
#undef if
if
