#if 1 +
x
#endif
#if * 2
x
#endif
#if 1 + * 2
x
#endif
#if )
x
#endif
#if "text"
x
#endif
#if = 1
x
#endif
#if # 1
x
#endif
#if 1 && 
x
#endif
#if !
x
#endif
#if _Pragma("x")
x
#endif
#if 1 == = 1
x
#endif
#if .5
x
#endif
