/* How an interrupt line signals, for drivers and device trees. */
#define IRQ_EDGE_RISING 1
#define IRQ_LEVEL_HIGH 4
