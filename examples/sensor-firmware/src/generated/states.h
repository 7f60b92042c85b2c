/* Made from src/states.sm by the state machine generator. Changes belong there. A #line directive gives the number of
 * its own line: the line behind it is the next one. */
#ifndef GENERATED_STATES_H
#define GENERATED_STATES_H

enum State { STATE_idle, STATE_warming, STATE_measuring };

static enum State nextState(enum State state, int elapsed, int samples) {
  switch (state) {
    case STATE_idle:
#line 3 "src/states.sm"
      if (elapsed >= IDLE_TICKS) return STATE_warming;
#line 13 "src/generated/states.h"
      break;
    case STATE_warming:
#line 7 "src/states.sm"
      if (elapsed >= WARM_UP_TICKS) return STATE_measuring;
#line 18 "src/generated/states.h"
      break;
    case STATE_measuring:
#line 11 "src/states.sm"
      if (samples == SAMPLES_PER_CYCLE) return STATE_idle;
#line 23 "src/generated/states.h"
      break;
  }
  return state;
}

#endif
