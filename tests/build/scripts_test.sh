#!/usr/bin/env bash
# What scripts/qnpp and scripts/test promise, tried on a copy of them in a checkout that only looks like one: the tools
# they call are stand-ins that note how they were called, and the "program" is a small script.
#
#   scripts_test.sh <folder of the scripts>
set -u

scripts=$1
work=$(mktemp -d) || exit 1
trap 'rm -rf "$work"' EXIT
tree="$work/a checkout"
bin=$work/bin
export CALLS=$work/calls STAND_INS=$bin

failures=0
check() { # check <what must hold> <command...>
  local what=$1
  shift
  "$@" && return
  printf 'FAILED: %s\n' "$what"
  failures=$((failures + 1))
}
same() { # same <what> <expected> <actual>
  [ "$2" = "$3" ] && return
  printf 'FAILED: %s\n  expected: %s\n  found:    %s\n' "$1" "$2" "$3"
  failures=$((failures + 1))
}
callsOf() { grep -c "^$1" "$CALLS"; }

# ---- The stand-ins. Only what is linked or written here can be found by the scripts. ----

mkdir "$bin"
for tool in bash sh env readlink dirname find flock mkdir touch mv rm grep cat id chmod sleep; do
  ln -s "$(command -v "$tool")" "$bin/$tool"
done
standIn() { # standIn <name>, the script on standard input
  { printf '#!/bin/sh\nprintf "%%s\\n" "%s $*" >>"$CALLS"\n' "$1"; cat; } >"$bin/$1"
  chmod +x "$bin/$1"
}
standIn cmake <<'END'
[ ! -e "$STAND_INS/broken" ] || { echo "some compiler error"; exit 1; }
cat >/dev/null
echo chatter
echo chatter >&2
if [ "$1" = --build ]; then
  sleep 0.2
  printf '#!/bin/sh\nprintf "<%%s>" "$@"; cat; exit "${STATUS:-0}"\n' >"$2/qnpp"
  chmod +x "$2/qnpp"
else
  printf 'CMAKE_HOME_DIRECTORY:INTERNAL=%s\n' "$2" >"$4/CMakeCache.txt"
  touch "$4/build.ninja"
fi
END
standIn ctest <<'END'
echo "100% of nothing"
exit 8
END
standIn apt-get <<'END'
for word; do
  case $word in
    ninja-build) printf '#!/bin/sh\n' >"$STAND_INS/ninja" && chmod +x "$STAND_INS/ninja" ;;
    flex) printf '#!/bin/sh\n' >"$STAND_INS/flex" && chmod +x "$STAND_INS/flex" ;;
  esac
done
echo "unpacking"
cat
END
for tool in g++ cc ninja flex; do standIn "$tool" </dev/null; done

newTree() {
  rm -rf "$tree"
  mkdir -p "$tree"/{cmake,driver,lexer,engine,macros,directives,include,.git/logs}
  cp -r "$scripts" "$tree/scripts"
  touch "$tree/CMakeLists.txt" "$tree/lexer/a.cpp" "$tree/.git/logs/HEAD"
  : >"$CALLS"
}

# run <command...>: leaves $out, $err and $status. Standard input is the caller's.
run() {
  PATH=$bin HOME=/nonexistent "$@" >"$work/out" 2>"$work/err"
  status=$?
  out=$(cat "$work/out")
  err=$(cat "$work/err")
}
qnpp() { run "$tree/scripts/qnpp" "$@"; }

# ---- The first run builds, and what comes out is the program's alone. ----

newTree
STATUS=7 qnpp -DA 'two words' '' <<<'the input'
same 'words and standard input reach the program' '<-DA><two words><>the input' "$out"
same 'the status is that of the program' 7 "$status"
same 'it is configured once' 1 "$(callsOf 'cmake -S')"
check 'the build is announced' grep -q building "$work/err"
check 'the chatter of the build is kept away' [ "${err/chatter/}" = "$err" ]
same 'a machine that has everything is left alone' 0 "$(callsOf apt-get)"

# ---- Later runs only run. ----

: >"$CALLS"
qnpp x </dev/null
same 'the second run has the same output' '<x>' "$out"
same 'the second run says nothing' '' "$err"
same 'the second run calls nothing' '' "$(cat "$CALLS")"

ln -s "$tree/scripts/qnpp" "$work/link"
mkdir "$work/elsewhere"
(cd "$work/elsewhere" && run ../link y </dev/null && [ "$out$err" = '<y>' ])
same 'it runs through a link from another folder' 0 $?
same 'running through a link calls nothing' '' "$(cat "$CALLS")"

# ---- A change of any kind is built before it runs. ----

rebuilds() { # rebuilds <what has changed>
  : >"$CALLS"
  qnpp </dev/null
  same "rebuilt after: $1" 1 "$(callsOf 'cmake --build')"
  same "not configured after: $1" 0 "$(callsOf 'cmake -S')"
  same "not announced after: $1" '' "$err"
  qnpp </dev/null
  same "rebuilt only once after: $1" 1 "$(callsOf 'cmake --build')"
}
sleep 0.05 && touch "$tree/lexer/a.cpp" && rebuilds 'a changed source'
sleep 0.05 && touch -d '2001-01-01' "$tree/engine/old.h" && rebuilds 'an added source with an old date'
sleep 0.05 && rm "$tree/lexer/a.cpp" && rebuilds 'a removed source'
sleep 0.05 && touch "$tree/CMakeLists.txt" && rebuilds 'changed build rules'
sleep 0.05 && touch "$tree/.git/logs/HEAD" && rebuilds 'a new commit'

# ---- Failures. ----

sleep 0.05 && touch "$tree/engine/old.h" "$bin/broken"
qnpp </dev/null
same 'a failed build has a status of its own' 125 "$status"
same 'a failed build leaves standard output alone' '' "$out"
check 'a failed build shows why' grep -q 'some compiler error' "$work/err"
rm "$bin/broken"
qnpp z </dev/null
same 'the next run builds again' '0<z>' "$status$out"

# ---- A checkout that was moved does not build into the old place. ----

mv "$tree" "$work/moved"
tree=$work/moved
sleep 0.05 && touch "$tree/engine/old.h"
: >"$CALLS"
qnpp m </dev/null
same 'a moved checkout runs' '0<m>' "$status$out"
same 'a moved checkout is configured again' 1 "$(callsOf 'cmake -S')"

# ---- Several first runs at once build once. ----

newTree
for i in 1 2 3 4; do
  PATH=$bin "$tree/scripts/qnpp" "$i" </dev/null >"$work/out.$i" 2>/dev/null &
done
wait
same 'first runs at once all run' '<1><2><3><4>' "$(cat "$work"/out.[1-4])"
same 'first runs at once build once' 1 "$(callsOf 'cmake --build')"

# ---- What is missing is installed, as root or through sudo, and standard input is not eaten by it. ----

if [ "$(id -u)" -eq 0 ]; then
  newTree
  rm "$bin/ninja" "$bin/flex"
  qnpp </dev/stdin <<<'mine'
  same 'the input survives an installation' '0<>mine' "$status$out"
  check 'what is missing is asked for by its package' grep -q '^apt-get .* install .*ninja-build flex' "$CALLS"
  same 'what is there is not installed' 0 "$(grep -c 'install.* cmake' "$CALLS")"
  check 'installing is told on standard error' grep -q 'unpacking' "$work/err"
fi

newTree
rm "$bin/ninja" "$bin/id"
printf '#!/bin/sh\necho 1000\n' >"$bin/id" && chmod +x "$bin/id"
qnpp </dev/null
same 'without root and sudo the set-up fails' 125 "$status"
check 'without root and sudo the package is named' grep -q 'ninja-build' "$work/err"
standIn sudo <<<'exec "$@"'
qnpp s </dev/null
same 'another user installs through sudo' '0<s>' "$status$out"
check 'sudo is given the installation' grep -q '^sudo env .*apt-get .*install' "$CALLS"

# ---- scripts/test. ----

newTree
run "$tree/scripts/test" -R some </dev/null
same 'the status is that of ctest' 8 "$status"
same 'the output is that of ctest' '100% of nothing' "$out"
check 'words go to ctest' grep -q '^ctest --test-dir .* -j3 -R some$' "$CALLS"
run "$tree/scripts/test" --quick -R some </dev/null
check 'quick tests are those that are not long' grep -q '^ctest --test-dir .* -LE long -R some$' "$CALLS"
: >"$CALLS"
touch "$bin/broken"
run "$tree/scripts/test" </dev/null
same 'no test runs after a failed build' '125 0' "$status $(callsOf ctest)"

[ "$failures" -eq 0 ] && printf 'all as promised\n'
exit $((failures > 0))
