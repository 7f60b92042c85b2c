# Completion of qnpp-explain's command line for bash.

_qnpp_explain() {
  local current=${COMP_WORDS[COMP_CWORD]}
  local previous=
  ((COMP_CWORD < 2)) || previous=${COMP_WORDS[COMP_CWORD - 1]}
  COMPREPLY=()
  case $previous in
    -s | -D | --macro | --width | --most | --most-uses) return ;;
    --color)
      mapfile -t COMPREPLY < <(compgen -W 'auto always never' -- "$current")
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
      mapfile -t COMPREPLY < <(compgen -W '-I -D -s -o --macro --html --json --color --width --most --most-uses
        -v --version -h --help' -- "$current")
      ;;
    *)
      compopt -o filenames 2>/dev/null
      mapfile -t COMPREPLY < <(compgen -f -- "$current")
      ;;
  esac
}

complete -F _qnpp_explain qnpp-explain
