#ifndef SENSORS_BAROMETER_H
#define SENSORS_BAROMETER_H

#include "sensor.h"

#if ADC_BITS < 12
/* A coarse converter: four conversions are added up, which gives two bits more. */
#define PRESSURE_READINGS 4
#else
#define PRESSURE_READINGS 1
#endif

SENSOR(pressure, 1, 300, 1100)

static struct Reading readPressureOften(void) {
  struct Reading reading = read_pressure();
  int count;
  for (count = 1; count < PRESSURE_READINGS; ++count) reading.value += read_pressure().value;
  reading.value /= PRESSURE_READINGS;
  return reading;
}

#endif
