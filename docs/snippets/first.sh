#!/bin/sh
# Runs the guide's first program and looks at single pixels of its picture.
# Usage: first.sh PROGRAM SOURCE_FOLDER
[ "${DISPLAY-}" ] || { echo "no X display"; exit 77; }
work=$(mktemp -d) || exit 1
trap 'rm -rf "$work"' EXIT
cd "$work" || exit 1
"$1" "$2" 2>stderr
status=$?
if [ $status -ne 0 ] || grep -qE '^(first|kygl|sogl): ' stderr; then
    cat stderr
    exit 1
fi
tail -c 196608 first.ppm | od -An -v -tu1 -w3 | awk '
    function expect(x, y, r, g, b) {
        if (pixels[256 * y + x] == r " " g " " b) return
        print "pixel " x ", " y " is " pixels[256 * y + x]; failed = 1
    }
    { pixels[NR - 1] = $1 " " $2 " " $3 }
    END {
        expect(128, 128, 0, 51, 102)   # the inmost ring, then outwards to the paper
        expect(166, 128, 255, 255, 255)
        expect(192, 128, 0, 51, 102)
        expect(218, 128, 255, 255, 255)
        expect(128, 192, 0, 51, 102)
        expect(2, 2, 255, 255, 255)
        exit failed
    }'
