# shellcheck shell=bash
# Every shape of line that qnpp writes to standard error; sourced behind lib.sh.
#
# writeMessages <program>: leaves the file messages.txt. Its lines are, in this order: an error and a warning with a place, an
# error in a file whose name holds a blank and a colon, a source that is not there, an unterminated comment (which names no
# file), a wrong command line, a warning about the command line (two lines), a message that ends in a file name, an input
# that cannot be read, and memory that ran out, with a place and without one. All but the last two are made by the program
# itself; those are held fast by the tests of faults, since not every build can be left without memory.
writeMessages() {
  local program=$1
  printf '#endif\n#define A 1\n#define A 2\n' >main.c
  printf '\n#error odd: name: 7: x\n' >'odd: name.c'
  printf '/*\n' >comment.c
  printf '#include "absent.h"\n' >includes.c
  {
    "$program" main.c
    "$program" 'odd: name.c'
    "$program" absent.c
    "$program" comment.c
    "$program" -x
    "$program" -o /dev/null -o /dev/null main.c 2>&1 >/dev/null | sed 2q >&2
    "$program" includes.c
    "$program" <.
    printf '%sFATAL ERROR: out of memory.\n' 'main.c:7: ' '' >&2
  } 2>messages.txt >/dev/null
  local expected='main.c:1: No "#if" directive associated to "#endif".
main.c:3: Warning: Macro "A" has an incompatible redefinition.
odd: name.c:2: #error directive:  odd: name: 7: x.
FATAL ERROR: cannot open absent.c.
2: unterminated comment.
qnpp: unknown option '"'-x'"' ('"'-h'"' for help)
qnpp: '"'-o'"' option appears more than once
	only the last one will be considered
includes.c:1: Cannot open file: absent.h.
input in flex scanner failed
main.c:7: FATAL ERROR: out of memory.
FATAL ERROR: out of memory.'
  same 'the messages have the shapes that are tried' "$expected" "$(cat messages.txt)"
}
