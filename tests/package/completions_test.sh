#!/usr/bin/env bash
# What a shell offers on the command line of qnpp or a companion: all options that --help shows and no others, and files and
# folders where they belong.
#
#   completions_test.sh <bash|zsh|fish> <folder of the completions> <program>
. "$(dirname "$0")/lib.sh"
shell=$1 completions=$2 program=$3
name=${program##*/}
function=_${name//-/_}
needs "$shell" "$shell"

mkdir 'sub dir' src
touch source.c 'two words.c'

# offers <command line up to the cursor>: the words offered for its last word, sorted, with a comma between two.
# Some shells show that a value belongs to an option by a "=".
offers() {
  "offers_in_$shell" "$1" 2>errors | sed 's|[/=]$||; /^$/d' | LC_ALL=C sort -u | paste -sd , -
  [ ! -s errors ] || cat errors
}

offers_in_bash() {
  bash --norc --noprofile -c '
    source "$1"
    declare -a COMP_WORDS COMPREPLY
    read -ra COMP_WORDS <<<"$2"
    [[ $2 != *" " ]] || COMP_WORDS+=("")
    COMP_CWORD=$((${#COMP_WORDS[@]} - 1)) COMP_LINE=$2 COMP_POINT=${#2}
    "$3"
    printf "%s\n" "${COMPREPLY[@]}"' offers "$completions/$name.bash" "$1" "$function"
}
offers_in_zsh() { timeout 60 zsh -f "$tests/complete.zsh" "$completions" "$1" "$work/zcompdump"; }
offers_in_fish() {
  HOME=$work/home fish --no-config -c "source '$completions/$name.fish'; complete -C '$1'" | cut -f 1
}

# What a folder looks like behind -I differs: bash quotes it and keeps the option, fish keeps the option, zsh neither.
case $shell in
  bash) attached='-Isrc,-Isub\ dir' ;;
  fish) attached='-Isrc,-Isub dir' ;;
  zsh) attached='src,sub dir' ;;
esac

options=$("$program" --help | sed -n 's/^  \(-[^:]*\):.*/\1/p' | sed 's/=.*//; s/<[a-z]*>//; s/,//' | tr ' ' '\n' | sed '/^$/d')
case $name in
  qnpp) count=8 ;;
  qnpp-build) count=22 ;;
  qnpp-explain) count=15 ;;
  qnpp-check) count=12 ;;
esac
long=$(grep -e -- <<<"$options" | LC_ALL=C sort | paste -sd , -)
same 'the options of --help are known' "$count" "$(wc -l <<<"$options")"
# Some shells complete one that is the beginning of others at once.
same 'all options are offered' "$(LC_ALL=C sort <<<"$options" | paste -sd , -)" "$(offers "$name -")"
same 'long options are offered' "$long" "$(offers "$name --")"
same 'the rest of a long option is offered' '--version' "$(offers "$name --v")"
same 'sources are offered' 'source.c' "$(offers "$name so")"
same 'names with blanks are offered' 'two words.c' "$(offers "$name tw")"
same 'output files are offered' 'source.c' "$(offers "$name -o sou")"
same 'folders are offered right behind -I' "$attached" "$(offers "$name -Is")"
same 'folders are offered behind -I and a blank' 'src,sub dir' "$(offers "$name -I s" | tr -d '\\')"
same 'nothing is offered for the name of the source' '' "$(offers "$name -s so")"
same 'nothing is offered for a macro' '' "$(offers "$name -Dso")"

# What is offered stands behind the option in fish, and as a word of its own elsewhere.
valuesOf() { offers "$name $1=$2" | sed "s/$1=//g"; }
case $name in
  qnpp-build)
    same 'styles are offered' 'glsl,gnu,hash,none' "$(valuesOf --line-directives '')"
    same 'the rest of a style is offered' 'glsl,gnu' "$(valuesOf --line-directives g)"
    same 'tools are offered' 'cmake,make,ninja' "$(valuesOf --depfile-format '')"
    same 'dependency files are offered' 'source.c' "$(offers "$name -MF sou")"
    same 'files of words are offered' 'source.c' "$(valuesOf --options-from sou)"
    same 'nothing is offered for another name of the source' '' "$(valuesOf --source-name so)"
    ;;
  qnpp-explain)
    same 'times for colours are offered' 'always,auto,never' "$(valuesOf --color '')"
    same 'pages are offered' 'source.c' "$(valuesOf --html sou)"
    same 'nothing is offered for a macro to be shown' '' "$(valuesOf --macro so)"
    ;;
  qnpp-check)
    same 'forms are offered' 'json,sarif,text' "$(valuesOf --format '')"
    # Whatever is no such word is named with all that are.
    ids=$("$program" --disable=none 2>&1 | sed 's/.*{\(.*\)}.*/\1/')
    same 'sorts of findings are offered' "$ids" "$(valuesOf --disable '')"
    same 'sorts of findings are offered for both options' "$ids" "$(valuesOf --enable '')"
    ;;
esac

if [ "$shell" = bash ]; then
  check "bash completes $name by this function" \
    [ "$(bash --norc --noprofile -c "source '$completions/$name.bash' && complete -p $name")" = "complete -F $function $name" ]
fi

finish
