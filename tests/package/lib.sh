# shellcheck shell=bash
# Shared by the tests of this folder; sourced, by bash. The test begins in a scratch folder, $work; its own folder is $tests.
set -u
export LC_ALL=C.UTF-8
unset SOURCE_DATE_EPOCH DESTDIR CMAKE_GENERATOR MAKEFLAGS MAKELEVEL MFLAGS PKG_CONFIG_PATH CMAKE_PREFIX_PATH
! command -v ninja >/dev/null || export CMAKE_GENERATOR=Ninja

tests=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd) || exit 1
work=$(mktemp -d) || exit 1
trap 'rm -rf "$work"' EXIT
cd "$work" || exit 1

failures=0

failed() { # failed <what must hold> [more lines...]
  printf 'FAILED: %s\n' "$1"
  shift
  [ $# -eq 0 ] || printf '  %s\n' "$@"
  failures=$((failures + 1))
}

check() { # check <what must hold> <command...>
  local what=$1
  shift
  "$@" || failed "$what"
}

same() { # same <what> <expected> <actual>
  [ "$2" = "$3" ] || failed "$1" "expected: $2" "found:    $3"
}

holds() { # holds <what> <text> <part that must be in it>
  case $2 in
    *"$3"*) ;;
    *) failed "$1" "not found: $3" "in: $2" ;;
  esac
}

# For a test that cannot say anything on this machine.
skip() { # skip <why>
  printf 'skipped: %s\n' "$*"
  exit 77
}

needs() { # needs <command> <Debian package>
  command -v "$1" >/dev/null 2>&1 || skip "$1 is not installed (Debian: $2)"
}

finish() {
  [ "$failures" -eq 0 ] && printf 'all as it should be\n'
  exit $((failures > 0))
}

# For tests of incremental builds: their `build` leaves its status, a log, and in `made` the sources it preprocessed.

remade() { # remade <after what> <expected sources>
  build
  if [ "$status" -ne 0 ]; then
    failed "built after: $1" "$(cat log)"
    exit 1
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
