#!/usr/bin/env bash
# The problem matcher against every shape of message.
#
#   problem_matcher_test.sh <matcher> <program> <python>
. "$(dirname "$0")/lib.sh"
. "$tests/messages.sh"
matcher=$1 program=$2 python=$3
writeMessages "$program"
# A line number beyond 31 bits shows as a negative one, which is no place. Messages of compilers are not for this matcher.
printf '#line 2147483648\n#endif\n' >far.c
"$program" far.c 2>>messages.txt >/dev/null
printf '%s\n' "qnpp-build: missing value for '-MF'" 'main.c:3:22: error: foo.' 'main.c:3: warning: foo.' >>messages.txt

# Prints "owner|severity|file|line|message" for each line that a pattern matches, and complains if two do.
cat >match.py <<'END'
import json, re, sys

matchers = json.load(open(sys.argv[1], encoding="utf-8"))["problemMatcher"]
if len({matcher["owner"] for matcher in matchers}) != len(matchers):
    print("two matchers have the same owner")
for line in open(sys.argv[2], encoding="utf-8").read().splitlines():
    matching = 0
    for matcher in matchers:
        (pattern,) = matcher["pattern"]
        found = re.search(pattern["regexp"], line, re.ASCII)
        if not found:
            continue
        matching += 1
        severity = matcher["severity"]
        if "severity" in pattern:
            severity = (found.group(pattern["severity"]) or severity).lower()
        parts = [found.group(pattern[key]) or "" if key in pattern else "" for key in ("file", "line", "message")]
        print("|".join([matcher["owner"], severity] + parts))
    if matching == 0:
        print("-")
    if matching > 1:
        print("more than one matches: " + line)
END
expected='qnpp|error|main.c|1|No "#if" directive associated to "#endif"
qnpp|warning|main.c|3|Macro "A" has an incompatible redefinition
qnpp|error|odd: name.c|2|#error directive:  odd: name: 7: x
qnpp-fatal|error|||FATAL ERROR: cannot open absent.c
qnpp-comment|error||2|unterminated comment
qnpp-command-line|error|||unknown option '"'-x'"' ('"'-h'"' for help)
qnpp-command-line|error|||'"'-o'"' option appears more than once
-
qnpp|error|includes.c|1|Cannot open file: absent.h
qnpp-scanner|error|||input in flex scanner failed
qnpp|error|main.c|7|FATAL ERROR: out of memory
qnpp-fatal|error|||FATAL ERROR: out of memory
qnpp|error|far.c||No "#if" directive associated to "#endif"
qnpp-command-line|error|||missing value for '"'-MF'"'
-
-'
same 'what the matcher finds' "$expected" "$("$python" match.py "$matcher" messages.txt)"

# The same by the expressions of JavaScript, in which the matcher is used.
if command -v node >/dev/null; then
  cat >match.js <<'END'
const fs = require('fs');
const matchers = JSON.parse(fs.readFileSync(process.argv[2], 'utf8')).problemMatcher;
for (const line of fs.readFileSync(process.argv[3], 'utf8').trimEnd().split('\n')) {
  let texts = [];
  for (const matcher of matchers) {
    const pattern = matcher.pattern[0];
    const found = line.match(new RegExp(pattern.regexp));
    if (!found) continue;
    const severity = (pattern.severity && found[pattern.severity] || matcher.severity).toLowerCase();
    const part = (key) => key in pattern ? found[pattern[key]] || '' : '';
    texts.push([matcher.owner, severity, part('file'), part('line'), part('message')].join('|'));
  }
  console.log(texts.length ? texts.join('\n') : '-');
}
END
  same 'what the matcher finds in JavaScript' "$expected" "$(node match.js "$matcher" messages.txt)"
fi

finish
