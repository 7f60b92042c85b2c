# Completion of qnpp's command line for bash.

_qnpp() {
  local current=${COMP_WORDS[COMP_CWORD]}
  local previous=
  ((COMP_CWORD < 2)) || previous=${COMP_WORDS[COMP_CWORD - 1]}
  COMPREPLY=()

  case $previous in
    -o)
      _qnpp_files "$current"
      return
      ;;
    -s | =)
      return # Any text, of a name or of a macro; nothing can be offered.
      ;;
    -I)
      _qnpp_directories "$current"
      return
      ;;
  esac

  case $current in
    -I*) _qnpp_directories "${current#-I}" -I ;;
    -D*) ;; # Any macro; nothing can be offered.
    -*) mapfile -t COMPREPLY < <(compgen -W '-I -D -o -s -v --version -h --help' -- "$current") ;;
    *) _qnpp_files "$current" ;;
  esac

  # The value of these two is written right behind them.
  [[ ${COMPREPLY[*]} != -[ID] ]] || compopt -o nospace 2>/dev/null
}

_qnpp_files() { # <beginning>
  compopt -o filenames 2>/dev/null
  mapfile -t COMPREPLY < <(compgen -f -- "$1")
}

_qnpp_directories() { # <beginning> [what stands before it in the word]
  local directories
  compopt -o nospace 2>/dev/null
  mapfile -t directories < <(compgen -d -S / -- "$1")
  # Without "-o filenames", which would not know where the name begins in the word, quoting is left to us.
  COMPREPLY=()
  local directory
  for directory in "${directories[@]}"; do
    COMPREPLY+=("$(printf '%s%q' "${2-}" "$directory")")
  done
}

complete -F _qnpp qnpp
