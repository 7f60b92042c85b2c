"a // b
"c /* d */
