# Completion of qnpp-check's command line for bash: that of qnpp, and what qnpp-check has beyond it.

_qnpp_check() {
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
    -o) _qnpp_check_files "$current" ;;
    -s | -D*) ;; # Any text; nothing can be offered.
    --format) mapfile -t COMPREPLY < <(compgen -W 'text json sarif' -- "$current") ;;
    --disable | --enable)
      mapfile -t COMPREPLY < <(compgen -W 'byte-order-mark comment-in-string directive-as-text divisor-in-condition
        lone-hash no-guard number-with-macro output-is-source pragma-once string-with-escape unknown-directive
        unused-macro words-behind-else' -- "$current")
      ;;
    -I) _qnpp_check_directories "$current" ;;
    *)
      case $current in
        -I*) _qnpp_check_directories "${current#-I}" -I ;;
        -D*) ;;
        -*)
          mapfile -t COMPREPLY < <(compgen -W '-I -D -o -s -v --version -h --help --format= --disable= --enable= --error' \
            -- "$current")
          ;;
        *) _qnpp_check_files "$current" ;;
      esac
      ;;
  esac

  # A value is written right behind these.
  [[ ${COMPREPLY[*]} != -[ID] && ${COMPREPLY[*]} != --*= && ${COMPREPLY[*]} != */ ]] || compopt -o nospace 2>/dev/null
}

_qnpp_check_files() { # <beginning>
  compopt -o filenames 2>/dev/null
  mapfile -t COMPREPLY < <(compgen -f -- "$1")
}

_qnpp_check_directories() { # <beginning> [what stands before it in the word]
  local directories directory
  mapfile -t directories < <(compgen -d -S / -- "$1")
  # Without "-o filenames", which would not know where the name begins in the word, quoting is left to us.
  for directory in "${directories[@]}"; do
    COMPREPLY+=("$(printf '%s%q' "${2-}" "$directory")")
  done
}

complete -F _qnpp_check qnpp-check
