#!/usr/bin/env bash
# What a shell offers on qnpp's command line: all options that --help shows and no others, and files and folders where they
# belong.
#
#   completions_test.sh <bash|zsh|fish> <folder of the completions> <program>
. "$(dirname "$0")/lib.sh"
shell=$1 completions=$2 program=$3
needs "$shell" "$shell"

mkdir 'sub dir' src
touch source.c 'two words.c'

# offers <command line up to the cursor>: the words offered for its last word, sorted, with a comma between two.
offers() {
  "offers_in_$shell" "$1" 2>errors | sed 's|/$||; /^$/d' | LC_ALL=C sort -u | paste -sd , -
  [ ! -s errors ] || cat errors
}

offers_in_bash() {
  bash --norc --noprofile -c '
    source "$1"
    declare -a COMP_WORDS COMPREPLY
    read -ra COMP_WORDS <<<"$2"
    [[ $2 != *" " ]] || COMP_WORDS+=("")
    COMP_CWORD=$((${#COMP_WORDS[@]} - 1)) COMP_LINE=$2 COMP_POINT=${#2}
    _qnpp
    printf "%s\n" "${COMPREPLY[@]}"' offers "$completions/qnpp.bash" "$1"
}
offers_in_zsh() { timeout 60 zsh -f "$tests/complete.zsh" "$completions" "$1"; }
offers_in_fish() {
  HOME=$work/home fish --no-config -c "source '$completions/qnpp.fish'; complete -C '$1'" | cut -f 1
}

# What a folder looks like behind -I differs: bash quotes it and keeps the option, fish keeps the option, zsh neither.
case $shell in
  bash) attached='-Isrc,-Isub\ dir' ;;
  fish) attached='-Isrc,-Isub dir' ;;
  zsh) attached='src,sub dir' ;;
esac

options=$("$program" --help | sed -n 's/^  \(-[^:]*\):.*/\1/p' | sed 's/<[a-z]*>//; s/,//' | tr ' ' '\n' | sed '/^$/d')
same 'the options of --help are known' 8 "$(wc -l <<<"$options")"
same 'all options are offered' "$(LC_ALL=C sort <<<"$options" | paste -sd , -)" "$(offers 'qnpp -')"
same 'long options are offered' '--help,--version' "$(offers 'qnpp --')"
same 'the rest of a long option is offered' '--version' "$(offers 'qnpp --v')"
same 'sources are offered' 'source.c' "$(offers 'qnpp so')"
same 'names with blanks are offered' 'two words.c' "$(offers 'qnpp tw')"
same 'output files are offered' 'source.c' "$(offers 'qnpp -o sou')"
same 'folders are offered right behind -I' "$attached" "$(offers 'qnpp -Is')"
same 'folders are offered behind -I and a blank' 'src,sub dir' "$(offers 'qnpp -I s' | tr -d '\\')"
same 'nothing is offered for the name of the source' '' "$(offers 'qnpp -s so')"
same 'nothing is offered for a macro' '' "$(offers 'qnpp -Dso')"

if [ "$shell" = bash ]; then
  check 'bash completes qnpp by this function' \
    [ "$(bash --norc --noprofile -c "source '$completions/qnpp.bash' && complete -p qnpp")" = 'complete -F _qnpp qnpp' ]
fi

finish
