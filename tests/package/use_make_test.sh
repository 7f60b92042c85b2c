#!/usr/bin/env bash
# The snippet for make: what is built, what is built again after which change, and what an error leaves behind.
#
#   use_make_test.sh <installation>
. "$(dirname "$0")/lib.sh"
needs make make
make --version 2>/dev/null | grep -q GNU || skip 'make is not GNU make'
# A copy, because make has no names with blanks, and who knows where the tests are run.
prefix=$work/prefix
cp -R "$1" "$prefix"

mkdir -p include sub
cat >Makefile <<END
QNPP_SOURCES := one.txt.in sub/two.txt.in
QNPPFLAGS = -Iinclude -DLEVEL=\$(LEVEL) '-DTEXT=a  "b"'
LEVEL := 1
include $prefix/share/qnpp/qnpp.mk

all: one.txt sub/two.txt
	@echo all
show:
	@echo '\$(QNPP) \$(QNPP_RESULTS)'
END
printf '#include <common.h>\n#line 9 "no such file.h"\none COMMON LEVEL TEXT\n' >one.txt.in
printf '#include <common.h>\n#include "a blank;$#%%:|=.h"\ntwo COMMON OTHER\n' >sub/two.txt.in
printf '#define COMMON common\n' >include/common.h
printf '#define OTHER other\n' >'sub/a blank;$#%:|=.h'

# Builds, and leaves the status in $status and the names of the sources that were preprocessed in $made.
build() {
  make "$@" >log 2>&1
  status=$?
  made=$(sed -n "s/.*qnpp .* '\([^']*\.in\)' ||.*/\1/p" log | sort | paste -sd , -)
}

remade() { # remade <after what> <expected sources>
  build
  if [ "$status" -ne 0 ]; then
    failed "built after: $1" "$(cat log)"
    exit 1
  fi
  same "preprocessed after: $1" "$2" "$made"
  build
  same "the build after that, after: $1" '0 ' "$status $made"
}

change() { # change <file> [<new text>]
  sleep 0.05
  if [ $# -eq 2 ]; then printf '%s\n' "$2" >"$1"; else touch "$1"; fi
}

same 'the snippet knows the program it was installed with' "$prefix/bin/qnpp one.txt sub/two.txt" "$(make -s show)"
same 'another program can be chosen' "/bin/true one.txt sub/two.txt" "$(make -s show QNPP=/bin/true)"
remade 'the beginning' 'one.txt.in,sub/two.txt.in'
same 'what is made without naming a goal is the first goal of the Makefile' 'all' "$(tail -n 1 log)"
same 'the first result' 'one common 1 a  "b"' "$(grep -v '^#' one.txt)"
same 'the second result' 'two common other' "$(grep -v '^#' sub/two.txt)"

change include/common.h && remade 'a header of both' 'one.txt.in,sub/two.txt.in'
change one.txt.in && remade 'a source' 'one.txt.in'
change 'sub/a blank;$#%:|=.h' && remade 'a header with all kinds of signs in its name' 'sub/two.txt.in'
change include/common.h '#include "deeper.h"'
printf '#define COMMON deep\n' >include/deeper.h
remade 'a header that includes another' 'one.txt.in,sub/two.txt.in'
change include/deeper.h '#define COMMON deeper'
remade 'the header of a header' 'one.txt.in,sub/two.txt.in'
same 'the result with a changed header' 'two deeper other' "$(grep -v '^#' sub/two.txt)"
change include/common.h '#define COMMON flat'
rm include/deeper.h
remade 'a header that is gone' 'one.txt.in,sub/two.txt.in'

stops() { # stops <on what> <what it says>
  build
  check "make stops on: $1" [ "$status" -ne 0 ]
  holds "the message is shown on: $1" "$(cat log)" "$2"
  same "nothing is left after: $1" '' "$(ls sub/two.txt 'sub/two.txt.part' 2>/dev/null)"
}
header='sub/a blank;$#%:|=.h'
change "$header" '#error no other'
stops 'an error in a header' 'sub/a blank;$#%:|=.h:1: #error directive:  no other.'
change "$header" '#if 1/0'
stops 'a zero divisor' 'Error'
change "$header" '#define OTHER mended'
remade 'mending the error' 'sub/two.txt.in'
build -j2 -B
same 'everything at once' '0 one.txt.in,sub/two.txt.in' "$status $made"

finish
