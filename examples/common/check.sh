#!/bin/sh
# check.sh EXPECTED PIXELS PROGRAM [ARGUMENT...]
#
# Runs an example and compares what comes of it with the file EXPECTED, which has one extended
# regular expression for each line:
#   what the program prints, without what the library prints of a link that fails, and on standard
#   error what begins with its name or is the library's
#   "status N"
#   "picture WxH" and "pixel X,Y RRGGBB", if it writes picture.png: the pixels that EXPECTED names
# Exits with 77 where DISPLAY is not set. A display needs the fonts that scripts/packages names.
expected=$1 pixels=$2 program=$3
shift 3
[ -s "$expected" ] || { echo "$expected: nothing is expected"; exit 1; }
[ "${DISPLAY-}" ] || { echo "no X display"; exit 77; }
work=$(mktemp -d) || exit 1
trap 'rm -rf "$work"' EXIT
cd "$work" || exit 1

"$program" "$@" >stdout 2>stderr
status=$?
{
    grep -v '^internal/' stdout
    grep -E "^(${program##*/}|kygl|sogl): " stderr
    echo "status $status"
    # shellcheck disable=SC2046  # a word for each pixel
    [ ! -e picture.png ] || "$pixels" picture.png $(sed -n 's/^pixel \([0-9,]*\) .*/\1/p' "$expected")
} >seen

awk 'NR == FNR { wanted[++count] = $0; next }
     $0 !~ "^(" wanted[FNR] ")$" { print "line " FNR ": expected " wanted[FNR]; bad = 1 }
     END { if (FNR != count) { print "expected " count " lines"; bad = 1 } exit bad }' \
    "$expected" seen && exit 0
echo "seen:"
cat seen
[ ! -s stderr ] || { echo "on standard error:" && cat stderr; }
exit 1
