#!/usr/bin/env bash
# The lines that the manual shows for an installation in $HOME/.local: the tools find everything through them, and nothing
# without.
#
#   private_prefix_test.sh <manual> <installation>
. "$(dirname "$0")/lib.sh"
manual=$1
export HOME=$work/home
mkdir "$HOME"
cp -R "$2" "$HOME/.local"

lines() { # lines <for what>: the block of that mark
  awk -v mark="<!-- lines: $1 -->" '$0 == mark { inside = 1 } inside && /^```/ { inside++; next } inside == 2; inside == 3 { exit }' "$manual"
}
lines profile >.profile
check 'the manual shows lines' grep -q MANPATH .profile
unset MANPATH XDG_DATA_DIRS

both() { # both <what must hold> <expected> <command...>: with the lines, and not without
  local what=$1 expected=$2
  shift 2
  [ "$("$@" 2>/dev/null)" != "$expected" ] || failed "not without the lines: $what"
  same "$what" "$expected" "$(set +u; . ./.profile; "$@" 2>&1)"
}
share=$HOME/.local/share
both 'the program is found' "$HOME/.local/bin/qnpp" bash -c 'command -v qnpp'
# Before them, so that the tests that follow see only what they are about.
export PATH=$HOME/.local/bin:$PATH
# man finds pages beside the bin of a PATH by itself.
if command -v man >/dev/null; then
  PATH=${PATH#*:} both 'man finds the page' "$share/man/man1/qnpp.1" man -w qnpp
fi
if command -v pkg-config >/dev/null; then
  finds() { pkg-config --exists qnpp && echo yes; }
  both 'pkg-config finds qnpp' yes finds
fi
mkdir project
printf 'cmake_minimum_required(VERSION 3.25)\nproject(p NONE)\nfind_package(qnpp REQUIRED)\nmessage(STATUS "in ${qnpp_DIR}")\n' \
  >project/CMakeLists.txt
configure() { rm -rf project/build; cmake -S project -B project/build | sed -n 's/^-- in //p'; }
PATH=${PATH#*:} both 'CMake finds qnpp' "$share/cmake/qnpp" configure
if command -v fish >/dev/null; then
  completes() { fish -c 'complete -C "qnpp --v"' | cut -f 1; }
  XDG_DATA_HOME=$work both 'fish finds the completion' --version completes
fi
if [ -e /usr/share/bash-completion/bash_completion ]; then
  completes() {
    bash --norc -c '. /usr/share/bash-completion/bash_completion; _completion_loader qnpp; complete -p qnpp'
  }
  XDG_DATA_HOME=$work both 'bash finds the completion' 'complete -F _qnpp qnpp' completes
fi
if command -v zsh >/dev/null; then
  completes() { zsh -f -c "$1"$'\nautoload -Uz compinit; compinit -u -D; print $_comps[qnpp-build]'; }
  same 'zsh finds nothing without the line' '' "$(completes '')"
  same 'zsh finds the completion' _qnpp-build "$(completes "$(lines zshrc)")"
fi
if command -v vim >/dev/null; then
  lines vimrc >.vimrc
  program() { vim -es -u "$1" -N -c 'silent! compiler qnpp' -c 'redir! > made' -c 'echo &makeprg' -c 'redir END' -c 'qa!'; tr -d '\n' <made; }
  same 'Vim finds nothing without the line' make "$(program NONE)"
  same 'Vim finds the compiler' qnpp "$(program .vimrc | cut -c 1-4)"
fi
if command -v emacs >/dev/null; then
  lines emacs >init.el
  check 'Emacs finds the settings' emacs -Q --batch -l init.el --eval "(require 'qnpp)"
fi

finish
