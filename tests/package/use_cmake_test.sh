#!/usr/bin/env bash
# find_package(qnpp) and qnpp_preprocess() in a project with every kind of name that CMake can cope with: what is built, what
# is built again after which change, and what an error leaves behind.
#
#   use_cmake_test.sh <installation> <generator>
. "$(dirname "$0")/lib.sh"
installation=$1 generator=$2
case $generator in
  Ninja) needs ninja ninja-build ;;
  *Makefiles) needs make make ;;
esac

# A copy, because one of the checks changes the program.
prefix="$work/the prefix"
cp -R "$installation" "$prefix"

# ---- The project. ----

mkdir -p project/"include; and more" project/sub 'project/se;mi'
cd project || exit 1
cat >CMakeLists.txt <<'END'
cmake_minimum_required(VERSION 3.22)
project(use C)
find_package(qnpp REQUIRED)
set(LEVEL 1 CACHE STRING "")

add_executable(app main.c)
qnpp_preprocess(TARGET app SOURCES plain.c.in "with blank.c.in" DEFINITIONS "LEVEL=${LEVEL}")

# A source that the build makes itself.
add_custom_command(
  OUTPUT made.c.in
  COMMAND "${CMAKE_COMMAND}" -E copy "${CMAKE_CURRENT_SOURCE_DIR}/made.txt" made.c.in
  DEPENDS made.txt VERBATIM)
qnpp_preprocess(
  TARGET app
  SOURCES "${CMAKE_CURRENT_BINARY_DIR}/made.c.in"
  INCLUDE_DIRECTORIES .
  OUTPUT_DIRECTORY "out put")

qnpp_preprocess(
  TARGET app
  SOURCES "se;mi/strange;näme.c.in"
  INCLUDE_DIRECTORIES "include; and more" sub
  DEFINITIONS "LIST=\"a;b\"" OPEN=[ "TEXT=it is '$1' \"and\"" "SLASH=\"\\\\\"" EMPTY= FLAG
  OUTPUT_DIRECTORY "${CMAKE_CURRENT_BINARY_DIR}/out put")
END
cat >main.c <<'END'
#include <stdio.h>
extern const char *plain, *blank, *made, *strange;
int main(void) {
  puts(plain);
  puts(blank);
  puts(made);
  puts(strange);
  return 0;
}
END
cat >common.h <<'END'
#define COMMON "common"
END
cat >plain.c.in <<'END'
#include "common.h"
#line 70 "no such file.h"
#define TEXT_OF(x) #x
#define VALUE_OF(x) TEXT_OF(x)
const char *plain = COMMON " " VALUE_OF(LEVEL);
END
cat >'with blank.c.in' <<'END'
#include "a blank.h"
#include "gr\"öße.h"
const char *blank = BLANK " " SIZE;
END
printf '#define BLANK "blank"\n' >'a blank.h'
printf '#define SIZE "size"\n' >'gr\"öße.h'
printf '#include "common.h"\nconst char *made = "made";\n' >made.txt
cat >'se;mi/strange;näme.c.in' <<'END'
#include <semi;colon.h>
#include <a[b.h>
#include "signs$#%&.h"
#include "$near.h"
#define TEXT_OF(x) #x
#define VALUE_OF(x) TEXT_OF(x)
#ifdef FLAG
const char *strange = SEMICOLON " " BRACKET " " SIGNS " " NEAR " " LIST " " VALUE_OF(OPEN) VALUE_OF(TEXT) SLASH EMPTY;
#endif
END
printf '#define SEMICOLON "semicolon"\n' >'include; and more/semi;colon.h'
printf '#define BRACKET "bracket"\n' >'include; and more/a[b.h'
printf '#define SIGNS "signs"\n' >'sub/signs$#%&.h'
printf '#define NEAR "near"\n' >'se;mi/$near.h'

configure() { # configure [words...]
  cmake -S . -B build -G "$generator" "-DCMAKE_PREFIX_PATH=$prefix" "$@" >configure.log 2>&1
}

# Builds, and leaves the status in $status and the names of the sources that were preprocessed in $made.
build() {
  cmake --build build --parallel 2 >build.log 2>&1
  status=$?
  made=$(sed -n 's/.*Preprocessing //p' build.log | LC_ALL=C sort | paste -sd , -)
}

remade() { # remade <after what> <expected sources>
  build
  if [ "$status" -ne 0 ]; then
    failed "built after: $1" "$(cat build.log)"
    exit 1 # Whatever follows would fail too.
  fi
  same "preprocessed after: $1" "$2" "$made"
  build
  same "the build after that, after: $1" '0 ' "$status $made"
}

# File times of two steps must differ.
change() { # change <file> [<new text>]
  sleep 0.05
  if [ $# -eq 2 ]; then printf '%s\n' "$2" >"$1"; else touch "$1"; fi
}

# ---- The first build. ----

configure || {
  cat configure.log
  exit 1
}
remade 'configuring' 'made.c.in,plain.c.in,strange_näme.c.in,with blank.c.in'
expected='common 1
blank size
made
semicolon bracket signs near a;b [it is '"'"'$1'"'"' "and"\'
same 'the program built' "$expected" "$(build/app)"
check 'the result lies in the output directory' [ -f "build/out put/strange_näme.c" ]

# ---- What is made again. ----

change common.h && remade 'a header of two sources' 'made.c.in,plain.c.in'
change plain.c.in && remade 'a source' 'plain.c.in'
change 'a blank.h' && remade 'a header with a blank in its name' 'with blank.c.in'
change 'gr\"öße.h' && remade 'a header with a quote and letters beyond ASCII in its name' 'with blank.c.in'
change 'include; and more/semi;colon.h' && remade 'a header with a semicolon in its name' 'strange_näme.c.in'
change 'include; and more/a[b.h' && remade 'a header with a lone bracket in its name' 'strange_näme.c.in'
change 'sub/signs$#%&.h' && remade 'a header with all kinds of signs in its name' 'strange_näme.c.in'
change 'se;mi/$near.h' && remade 'a header in a folder with a semicolon' 'strange_näme.c.in'
change 'se;mi/strange;näme.c.in' && remade 'a source with a semicolon in its name' 'strange_näme.c.in'
change made.txt && remade 'what a source is made from' 'made.c.in'
change main.c && remade 'a source of the compiler' ''
change "$prefix/bin/qnpp" && remade 'qnpp itself' 'made.c.in,plain.c.in,strange_näme.c.in,with blank.c.in'

sleep 0.05
configure -DLEVEL=2
remade 'another definition' 'plain.c.in,with blank.c.in'
same 'the program with another definition' 'common 2' "$(build/app | head -n 1)"
sleep 0.05
configure -DLEVEL=2
remade 'configuring again with nothing changed' ''

change common.h '#include "deeper.h"'
printf '#define COMMON "deep"\n' >deeper.h
remade 'a header that includes another' 'made.c.in,plain.c.in'
change deeper.h '#define COMMON "deeper"'
remade 'the header of a header' 'made.c.in,plain.c.in'
same 'the program with a changed header' 'deeper 2' "$(build/app | head -n 1)"
change common.h '#define COMMON "flat"'
remade 'a header that does not include the other any more' 'made.c.in,plain.c.in'
change deeper.h
remade 'a header that is no longer included' ''
change common.h '#include "deeper.h"'
remade 'a header that includes another again' 'made.c.in,plain.c.in'
change common.h '#define COMMON "flat"'
rm deeper.h
remade 'a header that is gone' 'made.c.in,plain.c.in'

# ---- Errors. ----

stops() { # stops <on what> <what it says> <result that must not exist>
  build
  check "the build stops on: $1" [ "$status" -ne 0 ]
  holds "the message is shown on: $1" "$(cat build.log)" "$2"
  same "nothing is left after: $1" '' "$(ls "$3" "$3.part" 2>/dev/null)"
  build
  check "the build stops again on: $1" [ "$status" -ne 0 ]
}
change 'a blank.h' '#error no blank'
stops 'an error in a header' "$work/project/a blank.h:1: #error directive:  no blank." 'build/with blank.c'
change 'a blank.h' '#if 1/0'
stops 'a zero divisor' 'qnpp failed on' 'build/with blank.c'
change 'a blank.h' '#define BLANK "mended"'
remade 'mending the error' 'with blank.c.in'
change 'a blank.h' $'#define BLANK 1\n#define BLANK "warned"'
remade 'a warning' 'with blank.c.in'
same 'the program with a warning' 'warned size' "$(build/app | sed -n 2p)"
mv plain.c.in elsewhere
build
check 'the build stops without the source' [ "$status" -ne 0 ]
mv elsewhere plain.c.in

# ---- Wrong calls. ----

wrong() { # wrong <call> <part of the message>
  mkdir wrong
  printf 'cmake_minimum_required(VERSION 3.22)\nproject(wrong NONE)\nfind_package(qnpp REQUIRED)\n%s\n' "$1" >wrong/CMakeLists.txt
  if cmake -S wrong -B wrong/build -G "$generator" "-DCMAKE_PREFIX_PATH=$prefix" >wrong.log 2>&1; then
    failed "this call is refused: $1"
  fi
  # CMake breaks lines where it likes.
  holds "this call is refused with words of its own: $1" "$(tr -s ' \n' ' ' <wrong.log)" "$2"
  rm -rf wrong
}
wrong 'qnpp_preprocess()' 'TARGET must name a target'
wrong 'qnpp_preprocess(TARGET nobody SOURCES a.c.in)' '"nobody" is none'
wrong 'qnpp_preprocess(a.c.in)' '"a.c.in" stands before the first keyword'
target='add_custom_target(t)
'
wrong "${target}qnpp_preprocess(TARGET t)" 'SOURCES must name a source'
wrong "${target}qnpp_preprocess(TARGET t SOURCES table.c)" 'does not end in ".in"'
wrong "${target}qnpp_preprocess(TARGET t SOURCES a.c.in b/a.c.in)" 'would both become'
wrong "${target}qnpp_preprocess(TARGET t SOURCES a.c.in OUTPUT_DIRECTORY \"a;b\")" 'because of the semicolon'
wrong "${target}qnpp_preprocess(TARGET t SOURCES a.c.in DEFINITIONS \"\")" 'a definition is empty'

finish
