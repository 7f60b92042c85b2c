#!/bin/sh
# Makes every NAME.conf from NAME.conf.in with the qnpp-build that pkg-config knows. The words go to it:
#
#   ./build.sh -DPORT=8443 -DDEBUG
set -eu

program=$(pkg-config --variable=build_program qnpp)
for source in *.conf.in; do
  "$program" "$@" -o "${source%.in}" "$source"
done
