#define line Z
lines line2 _line Line line
