#ifndef BOARD_H
#define BOARD_H

/* Revision B: four channels of twelve bits, one of them with a hygrometer. */
#define BOARD_NAME "revision B"
#define ADC_BITS 12
#define ADC_CHANNELS 4
#define HYGROMETER_CHANNEL 2

static inline int readConverter(int channel) {
  static const int values[ADC_CHANNELS] = {2048, 1024, 3072, 0};
  return values[channel];
}

#endif
