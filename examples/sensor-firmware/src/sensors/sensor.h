#ifndef SENSORS_SENSOR_H
#define SENSORS_SENSOR_H

#include <board.h>
#include "../core/fixed.h"
#include "../core/log.h"

#ifndef ADC_BITS
#error the board header must say how many bits its converter has
#endif

/* A reading as it goes over the wire, without gaps. */
#pragma pack(push, 1)
struct Reading {
  unsigned char channel;
  Fixed value;
};
#pragma pack(pop)

/* Defines a function that reads one sensor. */
#define SENSOR(name, channelNumber, low, high)                                 \
  static struct Reading read_##name(void) {                                    \
    struct Reading reading = {channelNumber, 0};                               \
    int raw = readConverter(channelNumber);                                    \
    if (raw < 0 || raw >> ADC_BITS != 0) logError("bad value of " #name, raw); \
    reading.value = FIXED_BETWEEN(low, high, raw, 1 << ADC_BITS);              \
    return reading;                                                            \
  }

#endif
