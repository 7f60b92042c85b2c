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
QNPP_SOURCES := one.txt.in sub/two.txt.in sub_two.txt.in \$(wildcard odd*.in)
QNPPFLAGS_sub_two.txt = \$(MORE)
QNPPFLAGS = -Iinclude -DLEVEL=\$(LEVEL) '-DTEXT=a  "b"'
LEVEL := 1
include $prefix/share/qnpp/qnpp.mk

all: \$(QNPP_RESULTS) use
	@echo all
use: one.txt
	@echo using
	@touch use
results:
	@printf '%s\\n' one.txt sub/two.txt sub_two.txt
show:
	@echo '\$(QNPP_BUILD) \$(QNPP_DEPS_DIR)'
END
printf '#include <common.h>\n#line 9 "no such file.h"\none COMMON LEVEL TEXT\n' >one.txt.in
printf '#include <common.h>\n#include "a blank;$#%%:|=.h"\ntwo COMMON OTHER\n' >sub/two.txt.in
printf '#define COMMON common\n' >include/common.h
printf '#define OTHER other\n' >'sub/a blank;$#%:|=.h'

printf '#include "a_blank"\nthree MORE\n' >sub_two.txt.in
odd='odd"&touch${IFS}pwned&`touch pwned`$(shell touch pwned)'"'<>^!{}@,+-é.txt"
odd=$(tr -d '() ' <<<"$odd")
printf 'odd\n' >"$odd.in"
printf '' >a_blank

# Builds, and leaves the status in $status and the names of the sources that were preprocessed in $made.
build() {
  make "$@" >log 2>&1
  status=$?
  made=$(sed -n "s/.*qnpp-build .* '\(.*\.in\)'$/\1/p" log | sed "s/odd.*/odd/" | LC_ALL=C sort | paste -sd , -)
}

same 'the snippet knows the program it was installed with' "$prefix/bin/qnpp-build .qnpp" "$(make -s show)"
same 'another program can be chosen' "/bin/true .qnpp" "$(make -s show QNPP_BUILD=/bin/true)"
remade 'the beginning' 'odd,one.txt.in,sub/two.txt.in,sub_two.txt.in'
same 'a result with an odd name' 'odd' "$(grep -v '^#' "$odd")"
same 'no name runs anything' '' "$(find . -name '*pwned*' ! -name 'odd*')"
same 'two names that differ in a slash' 'three MORE' "$(grep -v '^#' sub_two.txt)"
same 'what is made without naming a goal is the first goal of the Makefile' 'all' "$(make | tail -n 1)"
same 'the first result' 'one common 1 a  "b"' "$(grep -v '^#' one.txt)"
same 'the second result' 'two common other' "$(grep -v '^#' sub/two.txt)"

change include/common.h && remade 'a header of both' 'one.txt.in,sub/two.txt.in'
change one.txt.in && remade 'a source' 'one.txt.in'
change 'sub/a blank;$#%:|=.h' && remade 'a header with all kinds of signs in its name' 'sub/two.txt.in'
change include/common.h '#include "deeper.h"'
printf '#define COMMON deep\n' >include/deeper.h
remade 'a header that includes another' 'one.txt.in,sub/two.txt.in'
change a_blank && remade 'a header of a result whose name is nearly that of another' 'sub_two.txt.in'
build MORE=-DMORE=3
same 'other options for one result' '0 sub_two.txt.in' "$status $made"
same 'the result with other options' 'three 3' "$(grep -v '^#' sub_two.txt)"
build MORE=-DMORE=3
same 'the same options again' '0 ' "$status $made"
make -n >/dev/null
remade 'the options as they were, also after make -n' 'sub_two.txt.in'
build LEVEL=2
same 'other options for all' '0 odd,one.txt.in,sub/two.txt.in,sub_two.txt.in' "$status $made"
holds 'what depends on a result that has changed is made' "$(cat log)" 'using'
remade 'all options as they were' 'odd,one.txt.in,sub/two.txt.in,sub_two.txt.in'
change "$prefix/bin/qnpp-build" && remade 'the program' 'odd,one.txt.in,sub/two.txt.in,sub_two.txt.in'
change one.txt.in
build
same 'a source that says the same as before' '0 one.txt.in' "$status $made"
same 'what depends on its result is not made' '' "$(grep using log)"
rm one.txt
build
same 'a result that was removed' '0 one deep 1 a  "b"' "$status $(grep -v '^#' one.txt)"
change include/deeper.h '#define COMMON deeper'
remade 'the header of a header' 'one.txt.in,sub/two.txt.in'
same 'the result with a changed header' 'two deeper other' "$(grep -v '^#' sub/two.txt)"
mv include/deeper.h include/deepest.h
change include/common.h '#include "deepest.h"' && remade 'a header that was renamed' 'one.txt.in,sub/two.txt.in'
mv include/deepest.h include/deeper.h
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
stops 'a zero divisor' "$header:1: Division by zero, or out of range, in a condition."
change "$header" '#define OTHER mended'
remade 'mending the error' 'sub/two.txt.in'
bytes() { make -s results | xargs -d '\n' sha256sum; }
before=$(bytes)
rm -r .qnpp one.txt sub/two.txt sub_two.txt "$odd"
build -j2
same 'everything at once' '0 odd,one.txt.in,sub/two.txt.in,sub_two.txt.in' "$status $made"
same 'the bytes of a build from scratch' "$before" "$(bytes)"

# ---- Names that make has not. ----

refused() { # refused <name of a source> <part of the message>
  mkdir refused
  printf 'QNPP_SOURCES := %s\ninclude %s\nall: $(QNPP_RESULTS)\n' "$1" "$prefix/share/qnpp/qnpp.mk" >refused/Makefile
  check "refused: $1" [ "$(make -C refused >refused.log 2>&1; echo $?)" -ne 0 ]
  holds "refused with words of its own: $1" "$(cat refused.log)" "$2"
  rm -r refused
}
refused 'table.c' "the name of the source 'table.c' does not end"
for sign in : ';' = '|' % '\\' '*' '?' '[' '\#' '('; do
  refused "a${sign}b.in" "make cannot work with the name 'a"
done

finish
