// What the monitor prints as its help: for each command its code, the length of the text and the text.
#define COMMAND(code, name, help) .byte code, end_##name - help_##name; help_##name: .ascii help; end_##name:

TEXT # A comment for the assembler: for qnpp this line is text.
.section .rodata
.global commands
commands:
#include "commands.def"
.byte 0
