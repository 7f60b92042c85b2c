#!/usr/bin/env bash
# The library as others use it: by find_package and pkg-config from an installation, and as a part of their own project.
#
#   library_test.sh installed <examples> <installation> <shared library>
#   library_test.sh subproject <examples> <checkout>
#   library_test.sh interface|describe <checkout> <folder of generated sources> <shared library>
. "$(dirname "$0")/lib.sh"
what=$1
shift

# What the compiler of the examples says, by the command that is given without the names of files.
compiles() { # compiles <how> <command...>
  local how=$1
  shift
  same "the compiler, $how" "$(cat "$examples/library/expected")" \
    "$("$@" player.idl strange.idl broken.idl zero.idl endless.idl 2>&1)"
}

byCMake() { # byCMake <build folder> <words...>: configures and builds the project of the examples
  local folder=$1
  shift
  { cmake -S "$examples/library" -B "$folder" "$@" && cmake --build "$folder" --parallel 2; } >log 2>&1 ||
    failed "the examples are built with $*" "$(cat log)"
}

# By pkg-config of the installation in $work/prefix; the words are for pkg-config.
byPkgConfig() {
  needs pkg-config pkg-config
  local -a flags
  read -ra flags <<<"$(PKG_CONFIG_PATH=$work/prefix/lib/pkgconfig pkg-config --cflags --libs "$@" libqnpp)"
  "${CC:-cc}" -std=c99 -Wall -Wextra -Wpedantic -Werror "$examples/library/compiler.c" "${flags[@]}" -o compiler-in-c ||
    failed "C by pkg-config $*"
  "${CXX:-c++}" -std=c++17 -Wall -Wextra -Wpedantic -Werror "$examples/library/compiler.cpp" "${flags[@]}" -o compiler ||
    failed "C++ by pkg-config $*"
}

installed() {
  examples=$1
  # From a folder without blanks, before which pkg-config would put backslashes.
  cp -R "$2" prefix
  local pc=(prefix/lib*/pkgconfig)
  [ "$pc" = prefix/lib/pkgconfig ] || ln -s "${pc#prefix/}" prefix/lib
  byCMake found "-DCMAKE_PREFIX_PATH=$work/prefix"
  compiles 'in C++, by find_package' found/compiler
  compiles 'in C, by find_package' found/compiler-in-c
  byPkgConfig --static
  compiles 'in C++, by pkg-config' ./compiler
  compiles 'in C, by pkg-config' ./compiler-in-c
  compiles 'in Python' python3 -B "$examples/library/compiler.py" "$3"

  # Without its package there is no library, and nobody who only wants the program is kept from it.
  rm prefix/share/cmake/qnpp/qnppLibraryTargets*.cmake
  if cmake -S "$examples/library" -B without "-DCMAKE_PREFIX_PATH=$work/prefix" >log 2>&1; then
    failed 'the library is missing, and nobody says so'
  fi
  holds 'what is said when the library is missing' "$(tr -s ' \n' ' ' <log)" 'qnpp is installed without: library'
}

# With shared libraries, as the rest of the project has them, and without the option library of qnpp-build. Nothing is
# optimised, and clang compiles where it is installed: that takes the time of a test.
subproject() {
  examples=$1
  ! command -v clang++ >/dev/null || export CXX=clang++
  local words=(-DREQUESTS_FETCH_QNPP=ON "-DFETCHCONTENT_SOURCE_DIR_QNPP=$2" -DBUILD_SHARED_LIBS=ON
    -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS_DEBUG=-O0
    -DCMAKE_UNITY_BUILD=ON -DCMAKE_UNITY_BUILD_BATCH_SIZE=0 -DCMAKE_INSTALL_LIBDIR=lib
    -DCMAKE_DISABLE_FIND_PACKAGE_CLI11=ON)
  byCMake within "${words[@]}"
  compiles 'in C++, with qnpp within the project' within/compiler
  compiles 'in C, with qnpp within the project' within/compiler-in-c
  same 'no test of qnpp is run' 'Total Tests: 0' "$(ctest --test-dir within -N 2>&1 | grep Total)"
  cmake --install within --prefix "$work/without" >log 2>&1 || failed 'the project is installed' "$(cat log)"
  same 'nothing of qnpp is installed' 'bin/compiler' "$(cd without && find . -type f -o -type l | sed 's|^\./||')"

  byCMake within "${words[@]}" -DQNPP_INSTALL=ON
  cmake --install within --prefix "$work/prefix" >log 2>&1 || failed 'qnpp is installed with the project' "$(cat log)"
  local version
  version=$(prefix/bin/qnpp -v | sed -n 's/^qnpp version \([0-9.]*\) .*/\1/p')
  same 'the names of the shared library' "libqnpp.so -> libqnpp.so.${version%%.*}
libqnpp.so.${version%%.*} -> libqnpp.so.$version
libqnpp.so.$version -> " "$(cd prefix/lib && find . -name 'lib*.so*' -printf '%f -> %l\n' | LC_ALL=C sort)"
  byPkgConfig
  export LD_LIBRARY_PATH=$work/prefix/lib
  compiles 'in C++, by pkg-config with the shared library' ./compiler
  compiles 'in C, by pkg-config with the shared library' ./compiler-in-c
  holds 'the compiler asks for the library by its soname' "$(ldd compiler)" "libqnpp.so.${version%%.*} => $LD_LIBRARY_PATH"
  byCMake found "-DCMAKE_PREFIX_PATH=$work/prefix"
  compiles 'in C++, by find_package with the shared library' found/compiler
}

# What programs that were linked with the library rely on, as its debug information tells: the library has none itself, so
# that the part that the interface is in is compiled once more.
describe() { # describe <checkout> <folder of generated sources> <shared library>
  (cd "$1" && printf '#include "%s"\n' library/[!R]*.cpp) |
    "${CXX:-c++}" -x c++ - -std=c++20 -O0 -g -fPIC -shared -fvisibility=hidden -fvisibility-inlines-hidden "-I$1" \
      "-I$1/include" "-I$2" "-Wl,--version-script=$1/library/exported-symbols.txt" "-Wl,-soname,$(sonameOf "$3")" -o described.so &&
    abidw --headers-dir "$1/include/qnpp" --drop-private-types --exported-interfaces-only described.so |
    python3 -B "$tests/interface.py"
}
sonameOf() { readelf -d "$1" | sed -n 's/.*(SONAME).*\[\(.*\)\]/\1/p'; }
symbolsOf() { nm -D --defined-only "$1" | cut -d ' ' -f 2- | grep '^[TDBRVW] '; }

interface() { # interface <checkout> <folder of generated sources> <shared library>
  needs abidw abigail-tools
  describe "$@" >found || failed 'the interface can be described'
  same 'what is described exports what the library does' "$(symbolsOf "$3")" "$(symbolsOf described.so)"
  diff -u "$tests/library-interface.txt" found || failed 'the interface is what it was' \
    "If there is only more of it, keep what this writes: bash $tests/library_test.sh describe $*" \
    'All else wants another soname.'
}

"$what" "$@"
[ "$what" = describe ] || finish
