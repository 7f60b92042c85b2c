/* The firmware of a weather station: the measuring cycle, with the time given by the loop. */

#include "report.h"
#include "sensors/thermometer.h"
#include "sensors/barometer.h"

/* The configuration: each value can be chosen on the command line. */
#ifndef SAMPLES_PER_CYCLE
#define SAMPLES_PER_CYCLE 1
#endif
#ifndef IDLE_TICKS
#define IDLE_TICKS 3
#endif
#ifndef WARM_UP_TICKS
#define WARM_UP_TICKS 2
#endif

#include "generated/states.h"

#ifdef HYGROMETER_CHANNEL
#include "sensors/hygrometer.h"
#define REPORT_HUMIDITY() report(read_humidity(), "percent")
#define READINGS_PER_SAMPLE 3
#else
#define REPORT_HUMIDITY() (void)0
#define READINGS_PER_SAMPLE 2
#endif

static int sample(void) {
  struct Reading temperature = read_temperature();
  report(temperature, "degrees");
  if (isFreezing(temperature)) {
    logInfo("freezing, in hundredths of a degree:",
            fixedHundredths(temperature.value));
  }
  report(readPressureOften(), "hectopascal");
  REPORT_HUMIDITY();
  return READINGS_PER_SAMPLE;
}

int main(void) {
  enum State state = STATE_idle;
  int tick, entered = 0, samples = 0, readings = 0;

  printf("weather station, " BOARD_NAME "\n");
  for (tick = 0; tick < TICKS; ++tick) {
    enum State next = nextState(state, tick - entered, samples);
    if (next != state) {
      logInfo("entering a state at tick", tick);
      state = next;
      entered = tick;
      samples = 0;
    }
    if (state == STATE_measuring) {
      readings += sample();
      ++samples;
    }
  }
  reportEnd(readings);
  return 0;
}
