#define hashes # ## #
#define show(a) # a
#define between(a) show(a)
#define join(c, d) between(c hashes d)
join(x, y)
