#!/usr/bin/env bash
# The page for man(1): that no formatter finds anything to warn about, and that the converter accepts nothing it would garble.
#
#   manual_format_test.sh <page> <converter> <awk>
. "$(dirname "$0")/lib.sh"
page=$1 converter=$2 awk=$3

tried=0
if command -v man >/dev/null && man -l /dev/null >/dev/null 2>&1; then
  # As a terminal of 80 columns shows it.
  same 'man finds nothing to warn about' '' "$(MANWIDTH=80 man --warnings -E UTF-8 -l -Tutf8 -Z "$page" 2>&1 >/dev/null)"
  holds 'man shows the sections' "$(MANWIDTH=80 man -l "$page" 2>/dev/null | col -b)" 'EXIT STATUS'
  tried=1
fi
if command -v groff >/dev/null; then
  same 'groff finds nothing to warn about' '' "$(groff -ww -t -man -Tutf8 -z "$page" 2>&1)"
  tried=1
fi
[ "$tried" -eq 1 ] || skip 'neither man nor groff is installed (Debian: man-db)'

same 'nothing is wider than 80 columns, apart from commands' '' \
  "$(groff -rLL=78n -t -man -Tascii -P-cbou "$page" 2>/dev/null | awk 'length > 80' | grep -v '^ *\$ ')"

# ---- The converter. ----

convert() { # the manual on standard input; leaves $output and $status
  output=$("$awk" -v name=N -v section=1 -v date=d -v version=v -v copyright=c -f "$converter" - 2>&1)
  status=$?
}
becomes() { # becomes <what> <Markdown> <roff without the frame of the page>
  convert <<<"$2"
  same "$1" "$3" "$(sed -e '1,/^\.ad l$/d' -e '/^\.SH COPYRIGHT$/,$d' <<<"$output")"
}
refused() { # refused <what> <Markdown>
  convert <<<"$2"
  check "refused: $1" [ "$status" -ne 0 ]
}
becomes 'text that begins like a request is protected' '.de x' $'.PP\n\\&.de x'
becomes 'a backslash shows as itself' '`a\n`' $'.PP\n\\fBa\\en\\fR'
becomes 'a minus that can be copied' '`-I` x-y' $'.PP\n\\fB\\-I\\fR x-y'
becomes 'a tagged paragraph' $'- `-o` *name*\\\n  Text\n  goes on.' $'.TP\n\\fB\\-o\\fR \\fIname\\fR\nText\ngoes on.'
becomes 'a list' $'- one\n- two' $'.IP \\(bu 2\none\n.IP \\(bu 2\ntwo'
becomes 'code is left as it is' $'```c\n.x \\ *y*\n```' $'.PP\n.RS 4\n.nf\n\\&.x \\e *y*\n.fi\n.RE'
becomes 'no gap below a heading' $'## A\n\nx\n\ny' $'.SH "A"\nx\n.PP\ny'
becomes 'a comment is left out' $'<!--\nx\n-->\ny' $'.PP\ny'
becomes 'a table' $'<!-- widths: 5 6 -->\n\n| A | B |\n|---|---|\n| `x  y`<br>z | \\| |' \
  $'.TS\nlw(5n) lw(6n).\nT{\n\\fBA\\fR\nT}\tT{\n\\fBB\\fR\nT}\n_\nT{\n\\fBx\\ \\ y\\fR\n.br\nz\nT}\tT{\n|\nT}\n.TE'
refused 'a literal that does not end' 'a `b'
refused 'an unknown heading' '#### x'
refused 'a table without widths' $'| A |\n|---|\n| x |'
refused 'a row with another number of cells' $'<!-- widths: 5 5 -->\n| A | B |\n|---|---|\n| x |'
refused 'code that does not end' $'```\nx'
refused 'an indented line out of place' $'x\n\n  y'

finish
