#ifndef REPORT_H
#define REPORT_H

#include "sensors/sensor.h"

void report(struct Reading reading, const char *unit);
void reportEnd(int readings);

#endif
