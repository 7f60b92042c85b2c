#!/bin/sh
# Writes, as rules for make, which files a text preprocessed by qnpp depends on:
#
#   sh write-depfile.sh <preprocessed text> <name of the result> <folder for links>
#
# Every file that qnpp opens shows in a line directive of the text. Of the other names there, which `#line` may give,
# those that are no files are left out. Each file gets an empty rule too, so that one that was removed does not stop make.
set -eu
text=$1 result=$2 links=$3

# make has no spelling for some characters. A file with such a name is depended on by way of a link.
nameForMake() {
  case $1 in
    *[';|=%']*) ;;
    *)
      printf '%s\n' "$1"
      return
      ;;
  esac
  link=$links/$(printf '%s' "$1" | cksum | tr ' ' '-')
  case $1 in
    /*) ln -sf "$1" "$link" ;;
    *) ln -sf "$PWD/$1" "$link" ;;
  esac
  printf '%s\n' "$link"
}

sed -n 's/^#line [0-9]* "\(.*\)"$/\1/p' "$text" | sed 's/\\\\/\\/g' | LC_ALL=C sort -u |
  while IFS= read -r name; do
    [ -f "$name" ] || continue
    nameForMake "$name"
  done |
  sed -e 's/[ #:]/\\&/g' -e 's/\$/$$/g' |
  while IFS= read -r name; do
    printf '%s: %s\n%s:\n' "$result" "$name" "$name"
  done
