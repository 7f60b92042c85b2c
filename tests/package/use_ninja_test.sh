#!/usr/bin/env bash
# The rule for Ninja, and projects of Meson: what is built, what is built again after which change, and what an error leaves
# behind.
#
#   use_ninja_test.sh <installation> ninja|meson
. "$(dirname "$0")/lib.sh"
tool=$2
needs ninja ninja-build
needs "$tool" "$tool"
# A copy, because one of the checks changes the program.
prefix="$work/the prefix"
cp -R "$1" "$prefix"
export PATH="$prefix/bin:$PATH"

# ---- The project. ----

mkdir project
cd project || exit 1
mkdir -p include sub 'of ten'
printf '#include <common.h>\n#line 9 "no such file.h"\none COMMON LEVEL\n' >one.txt.in
printf '#include <common.h>\n#include "a blank;$#%%:|=*'"'"'.h"\ntwo COMMON OTHER\n' >sub/two.txt.in
header='sub/a blank;$#%:|=*'\''.h'
printf '#define OTHER other\n' >"$header"
printf '#include "öffnung"\nblank OPEN\n' >'of ten/with blank.txt.in'
printf '#define OPEN [\n' >'of ten/öffnung'
printf '#define COMMON common\n' >include/common.h
printf '#include "made.h"\nmade MADE\n' >made.txt
printf '#define MADE __LINE__\n' >made.h.txt

if [ "$tool" = ninja ]; then
  results=.
  cat >build.ninja <<END
include $(sed 's/ /$ /g' <<<"$prefix")/share/qnpp/qnpp.ninja
include level.ninja
qnpp_flags = -Iinclude -DLEVEL=\$level
rule copy
  command = cp \$in \$out
rule use
  command = cp \$in \$out && echo using
build one.txt: qnpp one.txt.in
build sub/two.txt: qnpp sub/two.txt.in
build with\$ blank.txt: qnpp of\$ ten/with\$ blank.txt.in
  qnpp_flags = -D'TEXT=a "b"'
build made.txt.in: copy made.txt
build made.h: copy made.h.txt
build result.txt: qnpp made.txt.in || made.h
build use: use one.txt
END
  setLevel() { echo "level = $1" >level.ninja; }
  setLevel 1
else
  results=build
  cat >meson.build <<'END'
project('use')
qnpp = find_program('qnpp-build')
words = ['--keep-unchanged', '--depend-on-program', '--depfile-format=ninja', '-MF', '@DEPFILE@', '-o', '@OUTPUT@']
common = words + ['-I' + meson.current_source_dir() / 'include', '-DLEVEL=' + get_option('level')]
one = custom_target('one', input: 'one.txt.in', output: 'one.txt', depfile: 'one.txt.d', build_by_default: true,
  command: [qnpp, common, '@INPUT@'])
custom_target('two', input: 'sub/two.txt.in', output: 'two.txt', depfile: 'two.txt.d', build_by_default: true,
  command: [qnpp, common, '@INPUT@'])
custom_target('blank', input: 'of ten/with blank.txt.in', output: 'with blank.txt', depfile: 'blank.d',
  build_by_default: true, command: [qnpp, words, '-DTEXT=a "b"', '@INPUT@'])
made = custom_target('made', input: 'made.txt', output: 'made.txt.in', command: ['cp', '@INPUT@', '@OUTPUT@'])
made_h = custom_target('made_h', input: 'made.h.txt', output: 'made.h', command: ['cp', '@INPUT@', '@OUTPUT@'])
custom_target('result', input: made, output: 'result.txt', depfile: 'result.txt.d', build_by_default: true,
  depends: made_h, command: [qnpp, words, '@INPUT@'])
custom_target('use', input: one, output: 'use', build_by_default: true,
  command: ['sh', '-c', 'echo using && cp "$0" "$1"', '@INPUT@', '@OUTPUT@'])
END
  echo "option('level', type: 'string', value: '1')" >meson_options.txt
  meson setup build >log 2>&1 || {
    cat log
    exit 1
  }
  setLevel() { meson configure build "-Dlevel=$1"; }
fi
resultOf() { [ "$tool" = ninja ] && echo "$1" || echo "build/${1##*/}"; }

# Builds, and leaves the status in $status and the names of the sources that were preprocessed in $made.
build() {
  ninja -C "$results" -v >log 2>&1
  status=$?
  made=$(sed -n "/^\[.*qnpp-build/s/.*[ /']\(\(one\|two\|with blank\|made\)\.txt\.in\).*/\1/p" log |
    LC_ALL=C sort | paste -sd , -)
}

textOf() { grep -v '^#' "$(resultOf "$1")"; }

all='made.txt.in,one.txt.in,two.txt.in,with blank.txt.in'
remade 'the beginning' "$all"
same 'the results' $'one common 1\ntwo common other\nblank [\nmade 2' \
  "$(textOf one.txt; textOf sub/two.txt; textOf 'with blank.txt'; textOf result.txt)"
change include/common.h && remade 'a header of two' 'one.txt.in,two.txt.in'
change one.txt.in
build
same 'a source that says the same as before' '0 one.txt.in' "$status $made"
same 'what depends on its result is not made' '' "$(grep -x using log)"
change "$header" && remade 'a header with all kinds of signs in its name' 'two.txt.in'
change 'of ten/öffnung' && remade 'a header with a name beyond ASCII' 'with blank.txt.in'
change made.h.txt '#define MADE "again"' && remade 'what a header is made from' 'made.txt.in'
same 'the result of it' 'made "again"' "$(textOf result.txt)"
change made.txt && remade 'what a source is made from' 'made.txt.in'
change include/common.h '#include "deeper.h"'
printf '#define COMMON deep\n' >include/deeper.h
remade 'a header that includes another' 'one.txt.in,two.txt.in'
change include/deeper.h '#define COMMON deeper' && remade 'the header of a header' 'one.txt.in,two.txt.in'
mv include/deeper.h include/other.h
change include/common.h '#include "other.h"' && remade 'a header that was renamed' 'one.txt.in,two.txt.in'
change include/common.h '#define COMMON flat'
rm include/other.h
remade 'a header that is gone' 'one.txt.in,two.txt.in'
sleep 0.05
setLevel 2
case $tool in
  ninja) expected='made.txt.in,one.txt.in,two.txt.in' ;;
  # When it configures again, Meson has Ninja take the time stamp of each result for the time at which it was made. Those
  # that were left alone by then are looked at once more.
  meson) expected=$all ;;
esac
remade 'another option' "$expected"
same 'the result with another option' 'one flat 2' "$(textOf one.txt)"
change "$prefix/bin/qnpp-build" && remade 'the program' "$all"

stops() { # stops <on what> <what it says>
  build
  check "the build stops on: $1" [ "$status" -ne 0 ]
  holds "the message is shown on: $1" "$(cat log)" "$2"
  check "nothing is left after: $1" [ ! -e "$(resultOf sub/two.txt)" ]
  build
  check "the build stops again on: $1" [ "$status" -ne 0 ]
}
change "$header" '#error no other'
stops 'an error in a header' "$header:1: #error directive:  no other."
change "$header" '#if 1/0'
stops 'a zero divisor' "$header:1: Division by zero, or out of range, in a condition."
change "$header" '#define OTHER mended'
remade 'mending the error' 'two.txt.in'

# ---- From scratch, the same bytes. ----

bytes() {
  for file in one.txt sub/two.txt 'with blank.txt' result.txt use; do
    sha256sum <"$(resultOf "$file")"
  done
}
before=$(bytes)
ninja -C "$results" -t clean >/dev/null
build
same 'everything from scratch' "0 $all" "$status $made"
same 'the bytes of a build from scratch' "$before" "$(bytes)"

if [ "$tool" = ninja ]; then
  # A result whose headers Ninja cannot follow.
  printf 'build it%ss.txt: qnpp one.txt.in\n' "'" >>build.ninja
  build
  check 'a result that Ninja cannot name stops the build' [ "$status" -ne 0 ]
  holds 'it is named' "$(cat log)" "a dependency file for Ninja cannot name the result 'it's.txt'"
fi

finish
