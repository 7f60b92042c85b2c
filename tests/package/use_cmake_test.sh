#!/usr/bin/env bash
# find_package(qnpp) and qnpp_preprocess() in a project with every kind of name that CMake can cope with: what is built, what
# is built again after which change, and what an error leaves behind.
#
#   use_cmake_test.sh <installation> <generator>
. "$(dirname "$0")/lib.sh"
installation=$1 generator=$2
case $generator in
  Ninja*) needs ninja ninja-build ;;
  *Makefiles) needs make make ;;
esac
# The folder of the results, and what says which of several configurations is meant.
config='' program=build/app
if [ "$generator" = 'Ninja Multi-Config' ]; then config=Debug/ program=build/Debug/app; fi
resultOf() { printf 'build/%s%s' "$config" "$1"; }

# A copy, because one of the checks changes the program.
prefix="$work/the prefix"
cp -R "$installation" "$prefix"

# ---- The project. ----

mkdir -p project/"include; and more" project/sub 'project/se;mi'
cd project || exit 1
cat >CMakeLists.txt <<'END'
cmake_minimum_required(VERSION 3.25)
project(use C)
find_package(qnpp REQUIRED)
set(LEVEL 1 CACHE STRING "")
set(CMAKE_CONFIGURATION_TYPES "Debug;Release" CACHE STRING "")

add_executable(app main.c)
target_compile_definitions(app PRIVATE OF_TARGET "SAID=said")
target_include_directories(app PRIVATE of_target/a of_target/b)
qnpp_preprocess(TARGET app SOURCES plain.c.in "with blank.c.in" DEFINITIONS "LEVEL=${LEVEL}")

# Two sources of one name, one of them without ".in", and what generator expressions stand for.
qnpp_preprocess(
  TARGET app
  SOURCES same/x.c other/x.c.in
  INCLUDE_DIRECTORIES "$<TARGET_PROPERTY:app,INCLUDE_DIRECTORIES>" "$<$<CONFIG:None>:/nowhere>"
  DEFINITIONS "$<TARGET_PROPERTY:app,COMPILE_DEFINITIONS>" "ID=$<TARGET_NAME_IF_EXISTS:app>" "$<$<CONFIG:None>:NONE>"
  OUT_VAR results)
qnpp_preprocess(
  TARGET app
  SOURCES plain.c.in
  OUTPUT_NAME named.txt
  LINE_DIRECTIVES gnu
  SOURCE_NAME "plain;$<name>"
  OPTIONS "--prefix-map=${CMAKE_CURRENT_SOURCE_DIR}/=" -I "in;clude$<"
  DEFINITIONS PATH="]======]")
file(WRITE "${CMAKE_BINARY_DIR}/results" "${results}")

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
mkdir -p same other of_target/a of_target/b
printf '#include <a.h>\n#include <b.h>\nconst char *x1 = TEXT_OF(SAID) A B;\n' >same/x.c
printf '#ifdef OF_TARGET\n#define TEXT(x) #x\n#define VALUE(x) TEXT(x)\nconst char *x2 = VALUE(ID);\n#endif\n' >other/x.c.in
printf '#define TEXT(x) #x\n#define TEXT_OF(x) TEXT(x)\n#define A " a"\n' >of_target/a/a.h
printf '#define B " b"\n' >of_target/b/b.h
cat >main.c <<'END'
#include <stdio.h>
extern const char *x1, *x2;
extern const char *plain, *blank, *made, *strange;
int main(void) {
  puts(plain);
  puts(blank);
  puts(made);
  puts(strange);
  puts(x1);
  puts(x2);
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

# What is made once more without need shows as too much in the next step.
remade() { # remade <after what> <expected sources>
  build
  if [ "$status" -ne 0 ]; then
    failed "built after: $1" "$(cat build.log)"
    exit 1 # Whatever follows would fail too.
  fi
  same "preprocessed after: $1" "$2" "$made"
}

# ---- The first build. ----

configure || {
  cat configure.log
  exit 1
}
first='made.c.in,plain.c.in,plain.c.in,strange;näme.c.in,with blank.c.in,x.c,x.c.in'
remade 'configuring' "$first"
remade 'nothing' ''
expected='common 1
blank size
made
semicolon bracket signs near a;b [it is '"'"'$1'"'"' "and"\
said a b
app'
same 'the program built' "$expected" "$("$program")"
check 'the result lies in the output directory' [ -n "$(find build -path '*/out put/*se_mi/strange_näme.c')" ]

# ---- What is made again. ----

same 'a result of another name and style' '# 1 "plain;$<name>"
# 1 "common.h" 1' "$(head -n 2 "$(resultOf named.txt)")"
check 'OUT_VAR holds the results' grep -qE '/same/x\.c;.*/other/x\.c$' build/results

change common.h && remade 'a header of two sources' 'made.c.in,plain.c.in,plain.c.in'
same 'nothing is compiled when a header says the same as before' '' "$(grep -o 'Building C.*' build.log)"
change of_target/b/b.h '#define B " c"' && remade 'a header found by a generator expression' 'x.c'
same 'what has changed is compiled' 'Building C object' "$(grep -o 'Building C object' build.log)"
change plain.c.in && remade 'a source' 'plain.c.in,plain.c.in'
change 'a blank.h' && remade 'a header with a blank in its name' 'with blank.c.in'
change 'gr\"öße.h' && remade 'a header with a quote and letters beyond ASCII in its name' 'with blank.c.in'
change 'include; and more/semi;colon.h' && remade 'a header with a semicolon in its name' 'strange;näme.c.in'
change 'include; and more/a[b.h' && remade 'a header with a lone bracket in its name' 'strange;näme.c.in'
change 'sub/signs$#%&.h' && remade 'a header with all kinds of signs in its name' 'strange;näme.c.in'
change 'se;mi/$near.h' && remade 'a header in a folder with a semicolon' 'strange;näme.c.in'
change 'se;mi/strange;näme.c.in' && remade 'a source with a semicolon in its name' 'strange;näme.c.in'
change made.txt && remade 'what a source is made from' 'made.c.in'
change main.c && remade 'a source of the compiler' ''
change "$prefix/bin/qnpp-build" && remade 'qnpp itself' "$first"

sleep 0.05
configure -DLEVEL=2
remade 'another definition' 'plain.c.in,with blank.c.in'
same 'the program with another definition' 'common 2' "$("$program" | head -n 1)"
sleep 0.05
configure -DLEVEL=2
remade 'configuring again with nothing changed' ''

change common.h '#include "deeper.h"'
printf '#define COMMON "deep"\n' >deeper.h
remade 'a header that includes another' 'made.c.in,plain.c.in,plain.c.in'
change deeper.h '#define COMMON "deeper"'
remade 'the header of a header' 'made.c.in,plain.c.in,plain.c.in'
same 'the program with a changed header' 'deeper 2' "$("$program" | head -n 1)"
mv deeper.h deepest.h
change common.h '#include "deepest.h"'
remade 'a header that was renamed' 'made.c.in,plain.c.in,plain.c.in'
mv deepest.h deeper.h
change common.h '#define COMMON "flat"'
remade 'a header that does not include the other any more' 'made.c.in,plain.c.in,plain.c.in'
change deeper.h
remade 'a header that is no longer included' ''
change common.h '#include "deeper.h"'
remade 'a header that includes another again' 'made.c.in,plain.c.in,plain.c.in'
change common.h '#define COMMON "flat"'
rm deeper.h
remade 'a header that is gone' 'made.c.in,plain.c.in,plain.c.in'
remade 'nothing, once more' ''

# ---- Errors. ----

stops() { # stops <on what> <what it says> <result that must not exist>
  build
  check "the build stops on: $1" [ "$status" -ne 0 ]
  holds "the message is shown on: $1" "$(cat build.log)" "$2"
  same "CMake adds no errors of its own on: $1" '' "$(grep 'CMake Error' build.log)"
  same "nothing is left after: $1" '' "$(ls "$3" "$3.part" 2>/dev/null)"
  build
  check "the build stops again on: $1" [ "$status" -ne 0 ]
}
change 'a blank.h' '#error no blank'
stops 'an error in a header' "$work/project/a blank.h:1: #error directive:  no blank." "$(resultOf 'with blank.c')"
change 'a blank.h' '#if 1/0'
stops 'a zero divisor' "$work/project/a blank.h:1: Division by zero, or out of range, in a condition." "$(resultOf 'with blank.c')"
change 'a blank.h' '#define BLANK "mended"'
remade 'mending the error' 'with blank.c.in'
change 'a blank.h' $'#define BLANK 1\n#define BLANK "warned"'
remade 'a warning' 'with blank.c.in'
same 'the program with a warning' 'warned size' "$("$program" | sed -n 2p)"
mv plain.c.in elsewhere
build
check 'the build stops without the source' [ "$status" -ne 0 ]
mv elsewhere plain.c.in
build

# ---- From scratch, the same bytes. ----

bytes() { find build \( -name '*.c' -o -name named.txt \) -not -path '*/CMakeFiles/*' -exec sha256sum '{}' + | LC_ALL=C sort; }
before=$(bytes)
rm -rf build
configure -DLEVEL=2
remade 'building from scratch' "$first"
same 'the bytes of a build from scratch' "$before" "$(bytes)"

# ---- Names that would run something, and words that would. ----

mkdir hostile
text='$(touch pwned) `touch pwned` "; touch pwned; &" end'
odd=('$(touch pwned)`touch pwned`' "q'u\"o' & touch pwned & '" '${HOME}$HOME$<CONFIG>' 's;touch pwned;#%' ']]=]]==]' 'back\slash*?')
{
  printf 'cmake_minimum_required(VERSION 3.25)\nproject(hostile NONE)\nfind_package(qnpp REQUIRED)\n'
  printf 'set(CMAKE_CONFIGURATION_TYPES "Debug;Release" CACHE STRING "")\nadd_custom_target(t ALL)\nqnpp_preprocess(TARGET t'
  printf ' DEFINITIONS [===[TEXT=%s]===] $<$<CONFIG:Release>:IS_RELEASE> INCLUDE_DIRECTORIES . SOURCES' "$text"
  printf ' [===[%s]===]' "${odd[@]}"
  printf ')\n'
} >hostile/CMakeLists.txt
for name in "${odd[@]}"; do
  printf '#include "header"\nTEXT COMMON\n' >"hostile/$name"
done
printf '#define COMMON first\n' >hostile/header
cmake -S hostile -B 'hostile/build' -G "$generator" "-DCMAKE_PREFIX_PATH=$prefix" >hostile.log 2>&1 ||
  failed 'names that would run something can be sources' "$(cat hostile.log)"
# Of each configuration: how many sources were preprocessed, and the different results that there are.
hostile() { # hostile <expected> <words for the build...>
  local expected=$1
  shift
  cmake --build hostile/build --parallel 2 "$@" >hostile.log 2>&1 || failed "they can be built: $*" "$(cat hostile.log)"
  same "what is made of them: $*" "$expected" "$(grep -c Preprocessing hostile.log) $(
    find "hostile/build/$folder" -maxdepth 1 -name '*_*' -not -name '*.*' -exec grep -hv '^#\|^$' '{}' '+' | sort -u)"
}
folder=$config
hostile "${#odd[@]} $text first" --config Debug
change hostile/header '#define COMMON second'
hostile "${#odd[@]} $text second" --config Debug
hostile "0 $text second" --config Debug
if [ -n "$config" ]; then
  # Each configuration has results of its own, and the other one is not taken for it.
  printf '#ifdef IS_RELEASE\n#define COMMON released\n#else\n#define COMMON second\n#endif\n' >hostile/header
  folder=Release/
  hostile "${#odd[@]} $text released" --config Release
  hostile "0 $text released" --config Release
  folder=Debug/
  hostile "${#odd[@]} $text second" --config Debug
  change hostile/header '#define COMMON third'
  hostile "${#odd[@]} $text third" --config Debug
  folder=Release/
  hostile "${#odd[@]} $text third" --config Release
fi
same 'no name has run anything' '' "$(find . -name pwned)"

# ---- Other places. ----

target='add_custom_target(t)
'
mkdir small
printf 'cmake_minimum_required(VERSION 3.25)\nproject(small NONE)\nfind_package(qnpp REQUIRED)\n%sqnpp_preprocess(TARGET t SOURCES a.in)\n' \
  "$target" >small/CMakeLists.txt
printf 'a\n' >small/a.in
other() { # other <build folder> [words...]: configures and builds the small project there
  cmake -S small -B "$@" -G "$generator" >small.log 2>&1 && cmake --build "$1" --target t >>small.log 2>&1
}
if [ "$generator" = 'Unix Makefiles' ]; then
  check 'a build folder with a blank is refused' [ "$(other 'bl ank' "-DCMAKE_PREFIX_PATH=$prefix"; echo $?)" -ne 0 ]
  holds 'it is refused with words of its own' "$(tr -s ' \n' ' ' <small.log)" 'lose dependencies; use Ninja'
else
  check 'a build folder with a blank does' other 'bl ank' "-DCMAKE_PREFIX_PATH=$prefix"
fi

# What follows has an end before anything is generated: one generator will do for it.
[ "$generator" = Ninja ] || finish

# ---- Other machines. ----

# This one has a qnpp that does not run here.
mkdir -p sysroot
cp -R "$prefix" sysroot/usr
printf 'foreign' >sysroot/usr/bin/qnpp-build
cat >toolchain.cmake <<END
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR other)
set(CMAKE_FIND_ROOT_PATH "$work/project/sysroot")
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
END
foreign="-DCMAKE_TOOLCHAIN_FILE=$work/project/toolchain.cmake"
check 'the qnpp of another machine does not run' [ "$(other cross1 "$foreign"; echo $?)" -ne 0 ]
check 'QNPP_EXECUTABLE names one that does' other cross2 "$foreign" "-DQNPP_EXECUTABLE=$prefix/bin/qnpp-build"
check 'qnpp_DIR leads to that of this machine' other cross3 "$foreign" "-Dqnpp_DIR=$prefix/share/cmake/qnpp"

# ---- Wrong calls. ----

wrong() { # wrong <call> <part of the message>
  mkdir wrong
  printf 'cmake_minimum_required(VERSION 3.25)\nproject(wrong NONE)\nfind_package(qnpp REQUIRED)\n%s\n' "$1" >wrong/CMakeLists.txt
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
wrong "${target}qnpp_preprocess(TARGET t)" 'SOURCES must name a source'
wrong "${target}qnpp_preprocess(TARGET t SOURCES a.c.in a.c)" 'would both become'
wrong "${target}qnpp_preprocess(TARGET t SOURCES a.c OUTPUT_DIRECTORY \"\${CMAKE_CURRENT_SOURCE_DIR}\")" 'would become itself'
wrong "${target}qnpp_preprocess(TARGET t SOURCES a.c.in OUTPUT_DIRECTORY \"a;b\")" 'because of the ";"'
wrong "${target}qnpp_preprocess(TARGET t SOURCES a.c.in OUTPUT_NAME \"a\$b\")" 'because of the "$"'
wrong "${target}qnpp_preprocess(TARGET t SOURCES a.c.in b.c.in OUTPUT_NAME c)" 'OUTPUT_NAME is for one source'
wrong "${target}qnpp_preprocess(TARGET t SOURCES \"a'b.c.in\")" 'a source made by the build cannot have this name'
wrong "${target}qnpp_preprocess(TARGET t SOURCES \"a
b.c.in\")" 'a word holds a line end'
wrong "${target}set(QNPP_EXECUTABLE /nowhere)
qnpp_preprocess(TARGET t SOURCES a.c.in)" 'names no file: "/nowhere"'
wrong "${target}qnpp_preprocess(TARGET t SOURCES a.c.in DEFINITIONS \"\")" 'a definition is empty'

finish
