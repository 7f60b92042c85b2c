#!/usr/bin/env bash
# The settings for Vim against every shape of message.
#
#   vim_test.sh <folder of the settings> <program>
. "$(dirname "$0")/lib.sh"
. "$tests/messages.sh"
settings=$1 program=$2
needs vim vim
vim --version | grep -q '+quickfix' && vim --version | grep -q '+eval' || skip 'this vim is without quickfix or eval'
writeMessages "$program"

cat >list.vim <<'END'
compiler qnpp
cgetfile messages.txt
let lines = []
for item in getqflist()
  call add(lines, join([item.valid, item.type, item.bufnr ? bufname(item.bufnr) : '', item.lnum, item.text], '|'))
endfor
call writefile(lines, 'list')
call writefile([&makeprg], 'makeprg')
qall!
END
HOME=$work timeout 60 vim -N -u NONE -i NONE -es --cmd "set runtimepath^=$settings" -S list.vim >log 2>&1 </dev/null
[ -s list ] || failed 'vim can read the messages' "$(cat log)"
expected='1||main.c|1|No "#if" directive associated to "#endif"
1|W|main.c|3|Macro "A" has an incompatible redefinition
1||odd: name.c|2|#error directive:  odd: name: 7: x
1|E||0|cannot open absent.c
1|||2|unterminated comment
1|||0|unknown option '"'-x'"' ('"'-h'"' for help)
1|||0|'"'-o'"' option appears more than once
1||includes.c|1|Cannot open file: absent.h
1|E||0|input in flex scanner failed
1|E|main.c|7|out of memory
1|E||0|out of memory'
same 'what vim makes of the messages' "$expected" "$(cat list)"
same 'the program that :make runs' qnpp "$(cat makeprg)"

finish
