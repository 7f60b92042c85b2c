#ifndef CORE_FIXED_H
#define CORE_FIXED_H

/* Numbers with a fixed point: 24 bits before it and 8 behind. The boards have no unit for floating point. */
typedef int Fixed;

#define FIXED_BITS 8
#define FIXED(whole) ((Fixed)((whole) * (1 << FIXED_BITS)))

/* The fraction part/whole of a range. */
#define FIXED_BETWEEN(low, high, part, whole) \
  (FIXED(low) +                               \
   (part) * (FIXED(high) - FIXED(low)) / (whole))

static inline int fixedHundredths(Fixed value) { return value * 100 / FIXED(1); }

#endif
