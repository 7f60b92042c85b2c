#elif 1/0 junk
a
