#!/usr/bin/env bash
# The packages: that the same bytes come out wherever they are made, and that what is in them can be used and removed.
#
#   packages_test.sh build <checkout> <its release build> <folder>     makes them below <folder>, and elsewhere there, and
#                                                                      with the shared library
#   packages_test.sh reproducible <its release build> <folder>
#   packages_test.sh lintian|deb|shared|tarball <folder>
. "$(dirname "$0")/lib.sh"

# The files that belong to the program, without anything built.
copyCheckout() { # copyCheckout <checkout> <folder>
  mkdir -p "$2"
  (cd "$1" && tar -cf - --exclude=./.git --exclude='./build*' --exclude=./tests --exclude=./bench --exclude=./fuzz .) |
    tar -xf - -C "$2"
}

configure() { # configure <source folder> <build folder> <release build, whose compiler and flags are taken> [words...]
  # Tests and benchmarks go into no package.
  CXX=$(cached "$3" CMAKE_CXX_COMPILER) CXXFLAGS=$(cached "$3" CMAKE_CXX_FLAGS) LDFLAGS=$(cached "$3" CMAKE_EXE_LINKER_FLAGS) \
    cmake -S "$1" -B "$2" "-DCMAKE_CXX_FLAGS_RELEASE=$(cached "$3" CMAKE_CXX_FLAGS_RELEASE)" \
    "-DCMAKE_UNITY_BUILD=$(cached "$3" CMAKE_UNITY_BUILD)" -DQNPP_BUILD_TESTS=OFF -DQNPP_BUILD_BENCHMARKS=OFF \
    -DQNPP_BUILD_FUZZERS=OFF "${@:4}"
}
cached() { sed -n "s/^$2:[A-Z]*=//p" "$1/CMakeCache.txt"; } # cached <build folder> <variable>

# Of the programs of the release build. A part of them is compiled once more in the other place: generated and written
# sources. All of it would take most of the time of these tests, by the same options. One job, because other tests run
# beside it. The .deb of the program is the same with the shared library, and a .deb takes longer than all else.
build() { # build <checkout> <release build> <folder>
  local here=$3/here there="$3/another place/with a longer name" programs
  programs=("$2"/{qnpp,qnpp-build,qnpp-explain,qnpp-check,libqnpp.a})
  rm -rf "$3"
  mkdir -p "$3"
  export SOURCE_DATE_EPOCH=1767225600
  copyCheckout "$1" "$here"
  copyCheckout "$1" "$there"
  umask 022
  { configure "$here" "$here/build" "$2" && cmake --build "$here/build" --target qnpp_man qnpp-build_man qnpp-explain_man qnpp-check_man &&
    cp "${programs[@]}" "$here/build" && (cd "$here/build" && cpack); } >"$3/log.1" 2>&1 ||
    failed 'the packages can be made' "$(tail -n 30 "$3/log.1")"
  export TZ=Pacific/Honolulu
  { configure "$there" "$3/another place/b" "$2" &&
    cmake --build "$3/another place/b" --parallel 1 --target qnpp_lexer_generated qnpp_process &&
    cp "${programs[@]}" "$here"/build/*.1 "$3/another place/b" && (cd "$3/another place/b" && cpack -G TGZ); } >"$3/log.2" 2>&1 ||
    failed 'the packages can be made in another place' "$(tail -n 30 "$3/log.2")"
  # The umask of the maker does not show in a package.
  { configure "$there" "$3/shared" "$2" -DQNPP_SHARED_LIBRARY=ON &&
    cp -P "${programs[@]}" "$2"/libqnpp.so* "$here"/build/*.1 "$3/shared" && (umask 077 && cd "$3/shared" && cpack -G DEB); } \
    >"$3/log.3" 2>&1 || failed 'the packages with the shared library can be made' "$(tail -n 30 "$3/log.3")"
  printf '%s/\n' "$1"/{directives,driver,engine,include,lexer,library,macros,tools} "$2" >"$3/places"
  ls "$here/build"/*.tar.gz || failed 'there is a .tar.gz'
}

needsPackages() { # needsPackages <folder>: leaves the names of the files in $deb and $development
  command -v dpkg-deb >/dev/null || skip 'dpkg-deb is not installed, so there is no .deb'
  deb=$(ls "$1"/here/build/qnpp_*.deb)
  development=$(ls "$1"/here/build/libqnpp-dev_*.deb)
}

reproducible() { # reproducible <release build> <folder>
  local here=$2/here/build there="$2/another place/b" file
  for file in libqnpp_process.a CMakeFiles/qnpp_lexer_generated.dir/generated/CppLexer.cpp.o; do
    cmp "$1/$file" "$there/$file" || failed "$file is the same"
  done
  cmp "$here"/*.tar.gz "$there"/*.tar.gz || failed 'the .tar.gz is the same'
  # The modes of the two parts of a .deb follow the umask.
  for file in "$here"/qnpp_*.deb; do
    [ -e "$file" ] || continue
    cmp <(ar p "$file") <(ar p "$2/shared/${file##*/}") || failed "${file##*/} is the same"
  done
  for file in "$here"/qnpp{,-build,-explain,-check}; do
    same "what ${file##*/} says of where it was built" '' "$(strings "$file" | grep -F -f "$2/places")"
  done
}

lintian_() { # lintian_ <folder>
  needsPackages "$1"
  needs lintian lintian
  # It wants an ordinary user, but can do without.
  lintian --allow-root --fail-on error "$deb" "$development" || failed 'lintian finds no error'
}

# Into an empty root with a database of packages of its own: the libraries of this machine are entered there, so that the
# versions that the package asks for are compared with those that it will run with.
deb() { # deb <folder>
  needsPackages "$1"
  [ "$(id -u)" -eq 0 ] || skip 'dpkg installs only for root'
  local root=$work/root before after library
  mkdir -p "$root"/var/lib/dpkg/{info,updates,triggers}
  : >"$root/var/lib/dpkg/available"
  for library in libc6 libgcc-s1 libstdc++6; do
    dpkg -s "$library" 2>/dev/null | sed '/^Depends:/d; /^Pre-Depends:/d; /^Recommends:/d; /^Conffiles:/,/^[^ ]/{/^Conffiles:/d; /^ /d}'
    printf '\n'
  done >"$root/var/lib/dpkg/status"
  before=$(filesOf "$root")

  dpkg --root="$root" --install "$deb" >log 2>&1 || failed 'the package installs' "$(cat log)"
  same 'the package is installed' 'install ok installed' "$(dpkg-query --admindir="$root/var/lib/dpkg" -W -f '${Status}' qnpp)"
  printf '#define A b\nA\n' >source.txt
  same 'the installed program runs' $'#line 1 "source.txt"\n#line 2 "source.txt"\nb' "$("$root/usr/bin/qnpp" source.txt)"
  check 'the man page is there, compressed' gzip -t "$root/usr/share/man/man1/qnpp.1.gz"
  check 'the completion for zsh is where Debian looks' [ -s "$root/usr/share/zsh/vendor-completions/_qnpp" ]
  same 'the copyright file says who, and no more' "$("$root/usr/bin/qnpp" -v | sed -n 2p)" \
    "$(cat "$root/usr/share/doc/qnpp/copyright")"
  same 'everything belongs to root' '' "$(dpkg-deb -c "$deb" | awk '$2 != "root/root"')"
  same 'there are the man pages of the programs and no others' 'qnpp-build.1.gz qnpp-check.1.gz qnpp-explain.1.gz qnpp.1.gz' \
    "$(find "$root/usr/share/man" -type f -printf '%f\n' | LC_ALL=C sort | paste -sd ' ' -)"
  same 'the installed qnpp-build runs' 'b' "$("$root/usr/bin/qnpp-build" --line-directives=none source.txt)"
  holds 'the installed qnpp-explain runs' "$("$root/usr/bin/qnpp-explain" source.txt:2)" 'source.txt:1: #define A b'
  same 'the installed qnpp-check runs' '' "$("$root/usr/bin/qnpp-check" source.txt)"

  dpkg --root="$root" --install "$development" >log 2>&1 || failed 'the package of the library installs' "$(cat log)"
  cmake -S "${tests%/tests/package}/examples/library" -B library -DCMAKE_BUILD_TYPE=Release "-DCMAKE_PREFIX_PATH=$root/usr" >log 2>&1 &&
    cmake --build library >>log 2>&1 || failed 'the library of the package can be used' "$(cat log)"
  same 'a program with the library of the package runs' 'void ping(void); // strange.idl:1
no request: skip; // strange.idl:3' "$(library/compiler strange.idl)"
  if dpkg --root="$root" --remove qnpp >log 2>&1; then
    failed 'the package of the library depends on that of the program'
  fi
  dpkg --root="$root" --remove libqnpp-dev >log 2>&1 || failed 'the package of the library can be removed' "$(cat log)"
  dpkg --root="$root" --purge libqnpp-dev >log 2>&1 || true

  dpkg --root="$root" --remove qnpp >log 2>&1 || failed 'the package can be removed' "$(cat log)"
  dpkg --root="$root" --purge qnpp >log 2>&1 || true
  after=$(filesOf "$root")
  same 'nothing is left' "$before" "$after"
}

# The packages with the shared library: of those who build, and of those who run what was built, which is that library and
# nothing else. They are unpacked only, because what dpkg does for a library wants a whole system around it.
shared() { # shared <folder>
  needsPackages "$1"
  needs pkg-config pkg-config
  local version=${deb##*/qnpp_} folder=$1/shared lib
  version=${version%%_*}
  local major=${version%%.*}
  local runtime=$folder/libqnpp${major}_${deb##*/qnpp_}
  deb=$folder/${deb##*/}
  development=$folder/${development##*/}
  same 'there are three packages' "$(printf '%s\n' "$development" "$runtime" "$deb")" \
    "$(LC_ALL=C ls "$folder"/*.deb)"
  same 'what those who build need' "qnpp (= $version), libqnpp$major (= $version)" "$(dpkg-deb -f "$development" Depends)"
  same 'what the library needs' 'libc6 libgcc-s1 libstdc++6' \
    "$(dpkg-deb -f "$runtime" Depends | sed 's/ ([^)]*)//g; s/,//g')"
  same 'what the program needs' libc6 "$(dpkg-deb -f "$deb" Depends | sed 's/ ([^)]*)//g')"
  same 'what packages that use the library will need' "libqnpp $major libqnpp$major (>= $version)" \
    "$(dpkg-deb -I "$runtime" shlibs | sed 's/ *$//')"
  ! command -v lintian >/dev/null || lintian --allow-root --fail-on error "$runtime" "$development" ||
    failed 'lintian finds no error in the packages of the library'

  dpkg-deb -x "$development" here && dpkg-deb -x "$deb" here && dpkg-deb -x "$runtime" here && dpkg-deb -x "$runtime" there
  lib=$(dirname "$(find here -name libqnpp.so)")
  # shellcheck disable=SC2046 # These are words.
  "${CC:-cc}" -std=c99 "${tests%/tests/package}/examples/library/compiler.c" -o compiler \
    $(PKG_CONFIG_PATH=$lib/pkgconfig pkg-config --cflags --libs libqnpp) || failed 'C is built with the packages'
  same 'a program runs with the package of the library' 'void ping(void); // strange.idl:1
no request: skip; // strange.idl:3' "$(LD_LIBRARY_PATH=there${lib#here} ./compiler strange.idl)"
  same 'everybody can read what is in the packages' '' "$(find here there ! -perm -444)"
  same 'what is in that package' "libqnpp.so.$major libqnpp.so.$version" \
    "$(find there -name '*.so*' -printf '%f\n' | LC_ALL=C sort | paste -sd ' ' -)"
}

filesOf() { # filesOf <root>: all that does not belong to dpkg itself
  (cd "$1" && find . -mindepth 1 -not -path './var*' | LC_ALL=C sort)
}

tarball() { # tarball <folder>
  tar -xzf "$1"/here/build/*.tar.gz || failed 'the archive can be unpacked'
  printf 'text\n' >source.txt
  same 'the program in it runs' $'#line 1 "source.txt"\ntext' "$(./qnpp-*/bin/qnpp source.txt)"
  check 'the man page is in it' [ -s "$(echo qnpp-*/share/man/man1/qnpp.1)" ]
  same 'everybody can read it' '' "$(find qnpp-* ! -perm -444)"
}

what=$1
shift
case $what in
  lintian) lintian_ "$@" ;;
  build | reproducible | deb | shared | tarball) "$what" "$@" ;;
  *) exit 2 ;;
esac
finish
