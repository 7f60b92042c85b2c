/* For the program and for its database alike. */
#define LONGEST_TITLE 40
#define STATE_OPEN 1
#define STATE_DONE 2
