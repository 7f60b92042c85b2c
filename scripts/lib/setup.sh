# Shared by the scripts of this folder: what must be installed, and the release build. Sourced, by bash.
#
# Nothing here writes to standard output or reads standard input; both belong to the program that is run afterwards.

# Where the checkout is. The caller sets it.
: "${root:?}"
buildDir=$root/build/release
program=$buildDir/qnpp
# Touched at the start of every build that succeeded: what is newer than this file is not in the program yet.
stamp=$buildDir/.scripts-built
# Status of a script that could not get as far as starting the program, which uses 0, 1 and 2 itself.
setupFailed=125

say() { printf 'qnpp: %s\n' "$*" >&2; }

fail() {
  say "$*"
  exit "$setupFailed"
}

hasCommand() { command -v "$1" >/dev/null 2>&1; }

hasHeader() { [ -e "/usr/include/$1" ] || [ -e "/usr/local/include/$1" ]; }

hasPythonPackage() { [ -d "/usr/lib/python3/dist-packages/$1" ]; }

# Runs a command as root, asking for nothing but, at worst, sudo's password. The lock of build() is not handed on: a
# service that a package starts would keep it.
asRoot() {
  if [ "$(id -u)" -eq 0 ]; then
    env "$@" 9>&-
  else
    sudo env "$@" 9>&-
  fi
}

# installMissing <what for>: installs the packages that this machine lacks for building ("build") or for building the
# tests too ("test"). A machine that has everything is not touched and needs neither apt nor a network.
installMissing() {
  local -a packages=()
  hasCommand g++ || hasCommand c++ || hasCommand "${CXX:-}" || packages+=(g++)
  hasCommand cmake || packages+=(cmake)
  hasCommand ninja || packages+=(ninja-build)
  hasCommand flex || packages+=(flex)
  hasHeader FlexLexer.h || packages+=(libfl-dev)
  if [ "$1" = test ]; then
    hasHeader CLI/CLI.hpp || packages+=(libcli11-dev)
    hasHeader gtest/gtest.h || packages+=(libgtest-dev)
    hasHeader nlohmann/json.hpp || packages+=(nlohmann-json3-dev)
    hasHeader benchmark/benchmark.h || packages+=(libbenchmark-dev)
    hasCommand python3 || packages+=(python3)
    hasCommand cc || packages+=(gcc)
    # What the tests of the manual, of the installation and of the packages use.
    hasCommand man || packages+=(man-db)
    hasCommand make || packages+=(make)
    hasCommand meson || packages+=(meson)
    hasCommand pkg-config || packages+=(pkg-config)
    hasCommand dpkg-shlibdeps || packages+=(dpkg-dev)
    hasCommand lintian || packages+=(lintian)
    hasCommand abidw || packages+=(abigail-tools)
    hasCommand file || packages+=(file)
    # What reads the results of the examples.
    hasCommand glslangValidator || packages+=(glslang-tools)
    hasCommand fdtget || packages+=(device-tree-compiler)
    hasCommand omniidl || packages+=(omniidl)
    hasCommand sqlite3 || packages+=(sqlite3)
    hasPythonPackage yaml || packages+=(python3-yaml)
    # What reads the events and the pages of qnpp-explain. Ubuntu has that browser as a snap only, and does without.
    hasPythonPackage jsonschema || packages+=(python3-jsonschema)
    if grep -qsx ID=debian /etc/os-release; then
      hasCommand chromium || packages+=(chromium)
      hasCommand chromedriver || packages+=(chromium-driver)
      hasPythonPackage selenium || packages+=(python3-selenium)
    fi
  fi
  installPackages ${packages[@]+"${packages[@]}"}
}

# installPackages [packages...]: installs Debian packages.
installPackages() {
  [ $# -gt 0 ] || return 0
  hasCommand apt-get || fail "please install $* (these are the Debian names)"
  [ "$(id -u)" -eq 0 ] || hasCommand sudo || fail "please install $*, or run this once as root"
  say "installing $*"
  # Waiting for the lock lets another installation on this machine finish first. A package list that cannot be refreshed
  # need not stop us: the one on the disk may do.
  local -a quietly=(DEBIAN_FRONTEND=noninteractive NEEDRESTART_SUSPEND=1)
  local -a apt=(apt-get -qq -o DPkg::Lock::Timeout=600)
  asRoot "${quietly[@]}" "${apt[@]}" update </dev/null >&2 || say "the package lists could not be refreshed"
  asRoot "${quietly[@]}" "${apt[@]}" install -y --no-install-recommends "$@" </dev/null >&2 ||
    fail "could not install $*"
}

# True if the program is there and nothing that goes into it has changed since it was built: neither a file nor a folder
# (which changes when a file in it is added, removed or renamed) nor the commit that is checked out.
isUpToDate() {
  [ -x "$program" ] && [ -e "$stamp" ] || return 1
  local -a inputs=(CMakeLists.txt cmake driver library lexer engine macros directives include)
  [ ! -e "$root/.git/logs/HEAD" ] || inputs+=(.git/logs/HEAD)
  [ -z "$(find "${inputs[@]/#/$root/}" -newer "$stamp" -print -quit 2>/dev/null)" ]
}

# quietly <log> <command> [words...]: the command's output goes to the log, and is shown only if the command fails.
quietly() {
  local log=$1
  shift
  "$@" </dev/null >>"$log" 2>&1 && return 0
  cat "$log" >&2
  return 1
}

# build <what for> [targets...]: brings the release build up to date, everything in it if no target is named. One script
# at a time: whoever comes second finds the work done.
build() {
  local purpose=$1
  shift
  mkdir -p "$buildDir" || fail "cannot make the folder $buildDir"
  (
    flock 9 || fail "cannot lock $buildDir.lock"
    [ "$purpose" = test ] || ! isUpToDate || exit 0
    installMissing "$purpose"

    # A folder that was copied or moved here from elsewhere, or one whose configuring failed half way, starts afresh.
    if [ -e "$buildDir/CMakeCache.txt" ]; then
      grep -qxF "CMAKE_HOME_DIRECTORY:INTERNAL=$root" "$buildDir/CMakeCache.txt" && [ -e "$buildDir/build.ninja" ] ||
        rm -rf "$buildDir"
    fi
    mkdir -p "$buildDir"
    log=$buildDir/scripts-build.log
    : >"$log" || fail "cannot write to $buildDir"
    touch "$stamp.new"
    if [ "$purpose" = test ] || [ ! -e "$buildDir/build.ninja" ]; then
      say "configuring the build in $buildDir"
      # Several sources in one go take less than half of the time.
      quietly "$log" cmake -S "$root" -B "$buildDir" -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_UNITY_BUILD=ON ||
        fail "configuring failed"
    fi
    # Before a program that has run already, a build is announced only if somebody is watching: standard error is the
    # program's then.
    [ "$purpose" = build ] && [ -x "$program" ] && [ ! -t 2 ] || say "building; the log is $log"
    quietly "$log" cmake --build "$buildDir" ${1:+--target "$@"} || fail "building failed"
    mv "$stamp.new" "$stamp"
  ) 9>"$buildDir.lock" || exit
}
