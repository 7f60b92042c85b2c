#!/usr/bin/env bash
# The rule for Bazel, without a network: what is built again after which change, what an undeclared header and an error do,
# and that a result comes out of a cache.
#
#   use_bazel_test.sh <examples> <installation>
. "$(dirname "$0")/lib.sh"
needs bazel bazel-bootstrap
prefix=$work/prefix
cp -R "$2" "$prefix"
cp -R "$1/build-bazel" project
cd project || exit 1
sed -i "s|/usr/|$prefix/|" WORKSPACE
mkdir -p of/ten
cat >>BUILD.bazel <<'END'

genrule(name = "make_header", outs = ["of/made.h"], cmd = "echo '#define MADE made' >$@")
genrule(name = "make_source", outs = ["made.txt.in"], cmd = "printf '#include <made.h>\\nMADE NAME __FILE__\\n' >$@")
qnpp_preprocess(name = "made", src = "made.txt.in", out = "ten/made.txt", hdrs = ["of/made.h"], includes = ["of"],
                defines = ["NAME='a $b; \"c\"'"])
qnpp_preprocess(name = "öd @+=~", src = "of/ten/a b,ö.in", out = "a b,ö", hdrs = glob(["of/ten/*.h"]))
END
printf '#include "$ '"'"'x#%%&;.h"\nX\n' >'of/ten/a b,ö.in'
printf '#define X x\n' >"of/ten/\$ 'x#%&;.h"

bazel() { HOME=$work command bazel --output_user_root="$work/bazel" "$@"; }
# Builds, and leaves the status in $status and how many results were made in $made, with "cached" for each that was not.
build() {
  bazel build //:all --jobs=1 --disk_cache="$work/cache" --color=no --curses=no --noshow_progress "$@" >log 2>&1
  status=$?
  made=$(sed -n 's/^INFO: [0-9]* process[es]*: //p' log)
}
built() { # built <after what> <what it has done>
  build
  [ "$status" -eq 0 ] || failed "built after: $1" "$(cat log)"
  holds "what is done after: $1" "$made" "$2"
}

built 'the beginning' ' linux-sandbox'
same 'a result' 'body { color: #eee; background: #222; }' "$(sed -n 2p bazel-bin/dark.css | grep . || grep body bazel-bin/dark.css)"
same 'a result from what the build makes' $'#line 1 "made.txt.in"\n#line 1 "of/made.h"\n#line 2 "made.txt.in"\nmade '\''a $b; "c"'\'' "made.txt.in"' \
  "$(cat bazel-bin/ten/made.txt)"
same 'a result with a name of many signs' 'x' "$(grep -v '^#' 'bazel-bin/a b,ö')"
built 'nothing' '1 internal.'
echo '/* more */' >>palette.h
built 'a header' '2 linux-sandbox'
sed -i 's/teal/navy/' palette.h
built 'a header that changes the results' '2 linux-sandbox'
same 'the changed result' 'a { color: navy; }' "$(grep '^a' bazel-bin/light.css)"

sed -i 's/hdrs = \["palette.h"\]/hdrs = []/' BUILD.bazel
build
check 'a header that is not declared stops the build' [ "$status" -ne 0 ]
holds 'it is named' "$(cat log)" 'colours.css.in:1: Cannot open file: palette.h.'
sed -i 's/hdrs = \[\]/hdrs = ["palette.h"]/' BUILD.bazel
built 'declaring it' 'internal'

echo '#error no' >>palette.h
build
check 'an error stops the build' [ "$status" -ne 0 ]
holds 'the message is shown' "$(cat log)" 'palette.h:10: #error directive:  no.'
sed -i '$d' palette.h
built 'mending the error' 'internal'

bazel clean >/dev/null 2>&1
built 'cleaning' '6 remote cache hit' # Some versions call the disk so.
cp "$prefix/bin/qnpp-build" other && printf 'x' >>other && cp other "$prefix/bin/qnpp-build"
built 'another program' '4 linux-sandbox'

bazel shutdown >/dev/null 2>&1
finish
