/* Lengths in tenths of a millimetre. */
struct unit {
  const char *name;
  long length;
};

#if WITH_SEA
#define SEA_UNITS UNIT(fathom, 18288) UNIT(nautical_mile, 18520000)
#else
#define SEA_UNITS
#endif

#define UNITS UNIT(inch, 254) UNIT(foot, 3048) UNIT(mile, 16093440) SEA_UNITS
