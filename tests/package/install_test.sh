#!/usr/bin/env bash
# `cmake --install` into a folder of one's own: what comes to lie where, and that it works from there.
#
#   install_test.sh <build folder> <prefix for the tests that use an installation>
. "$(dirname "$0")/lib.sh"
build=$1 prefix=$2

rm -rf "$prefix"
cmake --install "$build" --prefix "$prefix" >log 2>&1 || {
  cat log
  exit 1
}

# Documents and examples are whatever the checkout holds; everything else is named here.
expected='bin/qnpp
bin/qnpp-build
bin/qnpp-check
bin/qnpp-explain
include/qnpp/preprocessor-c.h
include/qnpp/preprocessor.h
include/qnpp/version.h
lib/libqnpp.a
lib/pkgconfig/libqnpp.pc
share/bash-completion/completions/qnpp
share/bash-completion/completions/qnpp-build
share/bash-completion/completions/qnpp-check
share/bash-completion/completions/qnpp-explain
share/cmake/qnpp/QnppPreprocess.cmake
share/cmake/qnpp/qnppConfig.cmake
share/cmake/qnpp/qnppConfigVersion.cmake
share/cmake/qnpp/qnppLibraryTargets-BUILD.cmake
share/cmake/qnpp/qnppLibraryTargets.cmake
share/cmake/qnpp/qnppTargets-BUILD.cmake
share/cmake/qnpp/qnppTargets.cmake
share/emacs/site-lisp/qnpp.el
share/fish/vendor_completions.d/qnpp-build.fish
share/fish/vendor_completions.d/qnpp-check.fish
share/fish/vendor_completions.d/qnpp-explain.fish
share/fish/vendor_completions.d/qnpp.fish
share/man/man1/qnpp-build.1
share/man/man1/qnpp-check.1
share/man/man1/qnpp-explain.1
share/man/man1/qnpp.1
share/pkgconfig/qnpp.pc
share/qnpp/bazel/BUILD.bazel
share/qnpp/bazel/WORKSPACE
share/qnpp/bazel/defs.bzl
share/qnpp/explain.schema.json
share/qnpp/qnpp-problem-matcher.json
share/qnpp/qnpp.mk
share/qnpp/qnpp.ninja
share/vim/vimfiles/compiler/qnpp.vim
share/zsh/site-functions/_qnpp
share/zsh/site-functions/_qnpp-build
share/zsh/site-functions/_qnpp-check
share/zsh/site-functions/_qnpp-explain'
found=$(cd "$prefix" && find . -type f -not -path './share/doc/*' | sed 's|^\./||' | LC_ALL=C sort)
same 'what is installed' "$expected" "$(sed 's/Targets-[a-z]*/Targets-BUILD/' <<<"$found")"
check 'the manual for the web is installed' [ -s "$prefix/share/doc/qnpp/docs/qnpp.1.md" ]
# The targets of its links, but for addresses and places within itself.
for link in $(grep -oE '\]\([^)#]+' "$prefix/share/doc/qnpp/README.md" | sed 's/^](//' | grep -v ://); do
  check "the installed README finds $link" [ -e "$prefix/share/doc/qnpp/$link" ]
done
check 'the scripts of the examples can be run' [ -x "$prefix/share/doc/qnpp/examples/build-pkg-config/build.sh" ]
check 'the examples are installed' [ -s "$prefix/share/doc/qnpp/examples/build-cmake/CMakeLists.txt" ]
same 'only the program and scripts can be run' '' \
  "$(cd "$prefix" && find . -type f -perm /111 -not -name '*.sh' -not -path './bin/*')"

# ---- The program, under whatever name the folder has by now. ----

moved="$work/moved to another place"
cp -R "$prefix" "$moved"
printf '#if A\nyes\n#endif\n' >source.txt
same 'the installed program runs' $'#line 1 "source.txt"\n#line 2 "source.txt"\nyes' \
  "$("$moved/bin/qnpp" -DA source.txt)"
for name in build explain check; do
  holds "the installed qnpp-$name runs" "$("$moved/bin/qnpp-$name" --version)" "qnpp-$name version "
done

# ---- pkg-config. ----

if command -v pkg-config >/dev/null; then
  # From a folder without blanks, before which pkg-config would put backslashes.
  cp -R "$prefix" "$work/prefix"
  prefix=$work/prefix
  export PKG_CONFIG_PATH=$prefix/share/pkgconfig
  same 'pkg-config knows the version' "$("$prefix/bin/qnpp" -v | sed -n 's/^qnpp version \([0-9.]*\) .*/\1/p')" \
    "$(pkg-config --modversion qnpp)"
  check 'pkg-config knows the program' [ "$(pkg-config --variable=program qnpp)" -ef "$prefix/bin/qnpp" ]
  check 'pkg-config knows the program for builds' \
    [ "$(pkg-config --variable=build_program qnpp)" -ef "$prefix/bin/qnpp-build" ]
  check 'pkg-config knows the rule for Ninja' [ "$(pkg-config --variable=ninjafile qnpp)" -ef "$prefix/share/qnpp/qnpp.ninja" ]
  check 'pkg-config knows the snippet for make' [ "$(pkg-config --variable=makefile qnpp)" -ef "$prefix/share/qnpp/qnpp.mk" ]
  cat >version.c <<'END'
#include <qnpp/version.h>
int main(void) { return QnGetVersionString() == QnGetCopyrightString(); }
END
  read -ra flags <<<"$(pkg-config --cflags qnpp)"
  check 'the header compiles as C' "${CC:-cc}" -std=c99 -Wall -Wextra -Wpedantic -Werror "${flags[@]}" -fsyntax-only version.c
  check 'the header compiles as C++' "${CXX:-c++}" -Wall -Wextra -Wpedantic -Werror "${flags[@]}" -fsyntax-only -x c++ version.c
else
  printf 'pkg-config is not installed: not tried\n'
fi

# ---- A build that takes the checkout in as a subfolder has the same names. ----

source=$(sed -n 's/^CMAKE_HOME_DIRECTORY:INTERNAL=//p' "$build/CMakeCache.txt")
mkdir outer
cat >outer/CMakeLists.txt <<END
cmake_minimum_required(VERSION 3.25)
project(outer C CXX)
add_subdirectory("$source" qnpp EXCLUDE_FROM_ALL)
add_library(texts STATIC text.c)
qnpp_preprocess(TARGET texts SOURCES more.c.in)
get_target_property(sources texts SOURCES)
message(STATUS "sources: \${sources}")
END
touch outer/text.c outer/more.c.in
cmake -S outer -B outer/build >log 2>&1 || failed 'a build with qnpp as a subfolder can be configured' "$(cat log)"
holds 'the function works in a build with qnpp as a subfolder' "$(cat log)" "sources: text.c;$work/outer/build/more.c"

finish
