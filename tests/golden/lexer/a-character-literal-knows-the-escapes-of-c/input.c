#define a Z
'a\"a' 'a\'a' 'a\?a' 'a\\a' 'a\aa' 'a\ba' 'a\fa' 'a\na' 'a\ra' 'a\ta' 'a\va' 'a\0' 'a\12' 'a\177' 'a\1234' 'a\x4' 'a\x41fF' a
