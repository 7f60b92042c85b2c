# Completion of qnpp-check's command line for bash.

_qnpp_check() {
  local current=${COMP_WORDS[COMP_CWORD]}
  local previous=
  ((COMP_CWORD < 2)) || previous=${COMP_WORDS[COMP_CWORD - 1]}
  COMPREPLY=()
  case $previous in
    -s | -D) return ;;
    --format)
      mapfile -t COMPREPLY < <(compgen -W 'text json sarif' -- "$current")
      return
      ;;
    --disable | --enable)
      mapfile -t COMPREPLY < <(compgen -W 'byte-order-mark comment-in-string directive-as-text divisor-in-condition lone-hash no-guard
        number-with-macro output-is-source pragma-once string-with-escape unknown-directive
        unused-macro words-behind-else' -- "$current")
      return
      ;;
    -I)
      compopt -o filenames 2>/dev/null
      mapfile -t COMPREPLY < <(compgen -d -- "$current")
      return
      ;;
  esac
  case $current in
    -*)
      mapfile -t COMPREPLY < <(compgen -W '-I -D -s -o --format --disable --enable --error -v --version -h --help' \
        -- "$current")
      ;;
    *)
      compopt -o filenames 2>/dev/null
      mapfile -t COMPREPLY < <(compgen -f -- "$current")
      ;;
  esac
}

complete -F _qnpp_check qnpp-check
