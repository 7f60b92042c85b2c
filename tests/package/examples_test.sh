#!/usr/bin/env bash
# The example projects that build with an installed qnpp, as their README.md says.
#
#   examples_test.sh <examples> <installation>
. "$(dirname "$0")/lib.sh"
needs pkg-config pkg-config
needs make make
examples=$1
# A copy, because make has no names with blanks, and who knows where the tests are run.
prefix=$work/prefix
cp -R "$2" "$prefix"
export PKG_CONFIG_PATH=$prefix/share/pkgconfig CMAKE_PREFIX_PATH=$prefix PATH=$prefix/bin:$PATH

cp -R "$examples"/build-* .
# The examples that name the place of the installation.
sed -i "s|/usr/|$prefix/|" build-ninja/build.ninja
readme() { # readme <example>: the commands shown in it, one a line
  sed -n 's/^    //p' "$1/README.md"
}
try() { # try <example> <expected last lines>
  local commands output
  commands=$(readme "$1")
  [ -n "$commands" ] || failed "$1 shows its commands"
  output=$(cd "$1" && bash -euc "$commands" 2>"$work/errors") || failed "$1 works" "$output" "$(cat "$work/errors")"
  same "what $1 prints" "$2" "$(tail -n "$(wc -l <<<"$2")" <<<"$output")"
}
lengths='inch 254
foot 3048
mile 16093440
fathom 18288
nautical_mile 18520000'
try build-cmake "$lengths"
if command -v meson >/dev/null; then
  try build-meson "$lengths"
fi
if command -v ninja >/dev/null; then
  try build-ninja 'body { color: #eee; background: #222; }
a { color: teal; }'
fi
try build-make 'Datei nicht gefunden
Zugriff verweigert'
try build-pkg-config '#line 7 "service.conf.in"
log = everything'

# A change in the middle comes through.
sleep 0.05
echo 'MESSAGE(full, "disk full", "Datei zu gross")' >>build-make/messages.def
make -C build-make >log 2>&1 || failed 'build-make is built again' "$(cat log)"
same 'build-make with a further message' 'Datei zu gross' "$(build-make/catalogue | tail -n 1)"
sleep 0.05
sed -i 's/UNIT(foot, 3048)/UNIT(foot, 3048) UNIT(yard, 9144)/' build-cmake/include/units.h
cmake --build build-cmake/build >log 2>&1 || failed 'build-cmake is built again' "$(cat log)"
same 'build-cmake with a further unit' 'yard 9144' "$(build-cmake/build/lengths | sed -n 3p)"

finish
