#define a Z
$a a$a @a
