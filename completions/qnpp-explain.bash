# Completion of qnpp-explain's command line for bash: that of qnpp, and what qnpp-explain has beyond it.

_qnpp_explain() {
  local current=${COMP_WORDS[COMP_CWORD]}
  local previous=
  ((COMP_CWORD < 2)) || previous=${COMP_WORDS[COMP_CWORD - 1]}
  COMPREPLY=()
  # bash breaks words at "=", which is a word of its own then.
  if [[ $previous == '=' ]] && ((COMP_CWORD > 2)); then
    previous=${COMP_WORDS[COMP_CWORD - 2]}
  elif [[ $current == '=' ]]; then
    current=
  elif [[ $current == --*=* ]]; then
    previous=${current%%=*}
    current=${current#*=}
  fi

  case $previous in
    -o | --html) _qnpp_explain_files "$current" ;;
    -s | -D* | --macro | --width | --most | --most-uses) ;; # Any text; nothing can be offered.
    --color) mapfile -t COMPREPLY < <(compgen -W 'auto always never' -- "$current") ;;
    -I) _qnpp_explain_directories "$current" ;;
    *)
      case $current in
        -I*) _qnpp_explain_directories "${current#-I}" -I ;;
        -D*) ;;
        -*)
          mapfile -t COMPREPLY < <(compgen -W '-I -D -o -s -v --version -h --help --macro= --html= --json --color= --width=
            --most= --most-uses=' -- "$current")
          ;;
        *) _qnpp_explain_files "$current" ;;
      esac
      ;;
  esac

  # A value is written right behind these.
  [[ ${COMPREPLY[*]} != -[ID] && ${COMPREPLY[*]} != --*= && ${COMPREPLY[*]} != */ ]] || compopt -o nospace 2>/dev/null
}

_qnpp_explain_files() { # <beginning>
  compopt -o filenames 2>/dev/null
  mapfile -t COMPREPLY < <(compgen -f -- "$1")
}

_qnpp_explain_directories() { # <beginning> [what stands before it in the word]
  local directories directory
  mapfile -t directories < <(compgen -d -S / -- "$1")
  # Without "-o filenames", which would not know where the name begins in the word, quoting is left to us.
  for directory in "${directories[@]}"; do
    COMPREPLY+=("$(printf '%s%q' "${2-}" "$directory")")
  done
}

complete -F _qnpp_explain qnpp-explain
