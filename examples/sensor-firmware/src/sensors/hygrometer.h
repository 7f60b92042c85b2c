#ifndef SENSORS_HYGROMETER_H
#define SENSORS_HYGROMETER_H

#include "sensor.h"

SENSOR(humidity, HYGROMETER_CHANNEL, 0, 100)

#endif
