# Prints what zsh offers at the end of a command line, one word a line, sorted.
#
#   zsh -f complete.zsh <folder of the completion> <command line> <file for what it learns at its start>
#
# The shell that completes runs on a terminal of its own. There compadd(), through which every offer goes, prints the words
# instead of adding them.
zmodload zsh/zpty || exit 77

folder=$1 line=$2 dump=$3
startup=$(mktemp -d) || exit 1
trap 'rm -rf $startup' EXIT
cat >$startup/.zshrc <<'END'
PS1= PS2= PROMPT_EOL_MARK=
unset zle_bracketed_paste
stty -echo cols 200 rows 500
fpath=($COMPLETIONS $fpath)
autoload -Uz compinit
compinit -u -d $DUMP
compadd() {
  # Asked to fill arrays, it offers nothing.
  if [[ ${@[1,(i)(-|--)]} == *-(O|A|D)\ * ]]; then
    builtin compadd "$@"
    return
  fi
  local -a fitting
  builtin compadd -A fitting "$@"
  print -l -- '' offer:${^fitting}
}
offer() {
  _main_complete
  compstate[insert]= compstate[list]=
  print -l -- '' finished
}
zle -C offering complete-word offer
bindkey '^I' offering
END
export COMPLETIONS=$folder DUMP=$dump ZDOTDIR=$startup
zpty completing zsh -d -i
zpty -w -n completing "$line"$'\t'
offers=()
while zpty -r completing output; do
  output=${output//$'\r'/}
  offers+=(${(M)${(f)output}:#offer:?*})
  [[ ${output#$'\n'} != finished* ]] || break
done
zpty -d completing
print -rl -- ${(ou)offers#offer:}
