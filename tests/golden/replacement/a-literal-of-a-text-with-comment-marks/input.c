#define STR(x) #x
#define ID(x) x
#define SLASH /
ID(STR(a "//" b)) ID(STR(/ * c)) STR(SLASH)
