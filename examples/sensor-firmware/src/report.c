/* What goes over the wire, in a form that people read. */

#include "report.h"
#include "core/log.h"

void report(struct Reading reading, const char *unit) {
  int hundredths = fixedHundredths(reading.value);
  const char *sign = hundredths < 0 ? "-" : "";
  if (hundredths < 0) hundredths = -hundredths;
  printf("channel %d: %s%d.%02d %s\n", reading.channel, sign, hundredths / 100, hundredths % 100, unit);
}

void reportEnd(int readings) {
  logInfo("bytes sent:", readings * (int)sizeof(struct Reading));
}
