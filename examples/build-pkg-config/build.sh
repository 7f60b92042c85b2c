#!/bin/sh
# Makes every NAME.conf from NAME.conf.in with the qnpp that pkg-config knows. The words go to qnpp:
#
#   ./build.sh -DPORT=8443 -DDEBUG
set -eu

qnpp=$(pkg-config --variable=program qnpp)
for source in *.conf.in; do
  result=${source%.in}
  # The result gets its name when it is known to be good.
  rm -f "$result"
  "$qnpp" "$@" -o "$result.part" "$source" || { rm -f "$result.part"; exit 1; }
  mv "$result.part" "$result"
done
