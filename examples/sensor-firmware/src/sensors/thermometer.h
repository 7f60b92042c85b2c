#ifndef SENSORS_THERMOMETER_H
#define SENSORS_THERMOMETER_H

#include "sensor.h"

SENSOR(temperature,
       0,          /* channel */
       -40, 85)    /* degrees */

/* True below the freezing point.
   Salt is spread then. */
static inline int isFreezing(struct Reading reading) { return reading.value < FIXED(0); }

#endif
