#!/bin/sh
# check.sh input|display GALLERY CHECK_PICTURE
#
# input: what must be refused before a display is needed. display: pictures, and what must be
# refused while drawing; exits with 77 where there is no display.
mode=$1 gallery=$2 check_picture=$3
work=$(mktemp -d) || exit 1
trap 'rm -rf "$work"' EXIT
out=$work/out.png
failures=0

failed() {
    echo "FAILED: $*"
    head -n 5 "$work/stderr" | sed 's/^/    stderr: /'
    failures=$((failures + 1))
}

# refused TEXT ARGUMENTS: one line on standard error that holds TEXT, status 1, nothing written.
refused() {
    text=$1
    shift
    "$gallery" --out "$out" "$@" >"$work/stdout" 2>"$work/stderr"
    status=$?
    [ $status -eq 1 ] && [ "$(wc -l <"$work/stderr")" -eq 1 ] &&
        grep -qF -- "$text" "$work/stderr" && [ -z "$(find "$work" -name 'out.png*')" ] ||
        failed "status $status, expected '$text': $*"
}

# drawn WIDTH HEIGHT ARGUMENTS: a picture of that size.
drawn() {
    width=$1 height=$2
    shift 2
    rm -f "$out"
    "$gallery" --out "$out" --size "${width}x$height" "$@" >"$work/stdout" 2>"$work/stderr" &&
        "$check_picture" "$out" "$width" "$height" || failed "no good picture: ${width}x$height $*"
}

# A grid of three columns and two rows with these rows, beneath this header if one is given.
grid() {
    printf "${2:-ncols 3\nnrows 2\nxllcorner 0\nyllcorner 0\ncellsize 30\n}$1" >"$work/grid.asc"
}

check_input() {
    unset DISPLAY
    refused "$work/none.asc: no such file" --grid "$work/none.asc"
    refused "$work: not a regular file" --grid "$work"
    refused ":1: the header lacks ncols" --grid "$gallery"

    # rows | what is said of them, behind the name of the file
    while IFS='|' read -r rows text; do
        grid "$rows"
        refused "$work/grid.asc:$text" --grid "$work/grid.asc"
    done <<'ROWS'
1 2 3\n4 5\n|7: only 2 values in a row, ncols is 3
1 2 3 4\n4 5 6\n|6: more values in a row, ncols is 3
1 2 3\n|6: 1 rows, nrows is 2
|5: 0 rows, nrows is 2
1 2 3\n4 5 6\n\n7 8 9\n|9: more rows than nrows, which is 2
1 2 3\n4 5x 6\n|7: column 2: '5x' is not a number
1 2 3\n4 \001\033[31m 6\n|7: column 2: '??[31m' is not a number
1 2 3\n4 5 nan\n|7: column 3: 'nan' is not a finite number
-inf 2 3\n4 5 6\n|6: column 1: '-inf' is not a finite number
1 2 1e999\n4 5 6\n|6: column 3: '1e999' is not a finite number
1 2 3\n-9999 5 6\n|7: column 1: a NODATA cell
1 2 3\n4 5 6e7\n|7: column 3: '6e7' is no elevation in metres
NODATA_value 5\n1 2 3\n4 5 6\n|8: column 2: a NODATA cell
ncols 3\n1 2 3\n4 5 6\n|6: ncols stands here again
NODATA_value\n1 2 3\n4 5 6\n|6: '' is not a number
ROWS

    # ncols and nrows | what is said of them
    while IFS='|' read -r extent text; do
        grid "1 2 3\n4 5 6\n" "xllcorner 0\nyllcorner 0\ncellsize 30\n$extent\n"
        refused "$work/grid.asc:$text" --grid "$work/grid.asc"
    done <<'EXTENTS'
ncols 3|5: the header lacks nrows
ncols 2147483647\nnrows 2147483647|6: ncols and nrows make more than 4 million cells
ncols 1e300\nnrows 2|6: ncols and nrows make more than 4 million cells
ncols -3\nnrows 2|6: ncols and nrows must be whole numbers from 2 on
ncols 2.5\nnrows 2|6: ncols and nrows must be whole numbers from 2 on
ncols 3 4\nnrows 2|4: more than one value for ncols
EXTENTS

    refused "--size 12: not of the form" --size 12
    refused "--size 12x34x56: not of the form" --size 12x34x56
    refused "--size 0x100: each side has" --size 0x100
    refused "--size 99999x99999: not of the form" --size 99999x99999
    refused "--frames: Value 0 not in range" --frames 0
    refused "not expected: --bogus" --bogus
    refused "no X display: DISPLAY is not set"
    refused "no X display: DISPLAY is not set" --list-fonts helvetica
    # Blanks, carriage returns and words in capitals are as good as any.
    grid " 1\t2  3 \r\n\r\n4 5 6\r\n" "NCOLS 3\r\nNROWS 2\r\nxllcenter 0\r\nyllcenter 0\r\ncellsize 30\r\n"
    refused "no X display: DISPLAY is not set" --grid "$work/grid.asc"
    DISPLAY=:9999 refused "no X display: cannot connect to ':9999'"
    out=$work/none/out.png refused "out.png: cannot be written: No such file or directory"
    out=$work refused "$work: cannot be written: not a regular file"
}

# A tree of shader files of its own, for tests to spoil.
shader_tree() {
    rm -rf "$work/share"
    cp -r "$(dirname "$0")/../../share" "$work/share"
    chmod -R u+w "$work/share"
    shaders=$work/share/shaders/gallery
}

check_display() {
    "$gallery" --window --frames 1 2>&1 | grep -q 'no X display' && exit 77
    drawn 640 256 --frames 3
    [ "$(grep -cE 'frame 1: shader [0-9]+, shader [0-9]+, program [0-9]+ +3 times +3 of 3 objects' "$work/stdout")" -eq 6 ] &&
        [ "$(grep -cE '(buffer|texture) [0-9]+, (buffer|texture) [0-9]+ .* 2 of 2 objects' "$work/stdout")" -eq 4 ] ||
        failed "not all was built once, found later and deleted: $(cat "$work/stdout")"
    cp "$out" "$work/clipped.png"
    NO_CLIP_PLANE=1 drawn 640 256 --frames 3
    cmp -s "$out" "$work/clipped.png" && failed "the clip plane makes no difference"
    drawn 301 400 --frames 1
    drawn 1400 640 --frames 1
    grid "5 5 5\n5 5 5\n"
    "$gallery" --out "$out" --grid "$work/grid.asc" --frames 1 >/dev/null 2>"$work/stderr" ||
        failed "no picture of flat ground"
    "$gallery" --list-fonts helvetica 2>"$work/stderr" | grep -q '^bold  *upright .* 24' ||
        failed "no list of fonts"
    "$gallery" --window --frames 3 >"$work/stdout" 2>"$work/stderr" || failed "no windows"
    rm -f "$out"

    # A disk that fills up, as a limit on the size of files.
    (trap '' XFSZ && ulimit -f 50 && refused "out.png: cannot be written: File too large" &&
        exit $failures) || failed "the write was not limited"

    refused "the X server has no bitmap font of family 'nosuch'" --list-fonts nosuch
    __GLX_VENDOR_LIBRARY_NAME=mesa MESA_EXTENSION_OVERRIDE=-GL_ARB_shader_objects \
        refused "this OpenGL has no GLSL"
    __GLX_VENDOR_LIBRARY_NAME=mesa MESA_EXTENSION_OVERRIDE=-GL_ARB_fragment_program \
        refused "this OpenGL has no ARB assembly programs"

    shader_tree
    sed -i '3i vec3 wrong = nothing;' "$shaders/cut.glsl"
    refused "$shaders/cut.glsl:3: error: \`nothing' undeclared" --root "$work"
    shader_tree
    sed -i 's/void main/void other/' "$shaders/terrain.vert"
    refused "$shaders/terrain.vert $shaders/terrain.frag: error: vertex shader lacks \`main'" --root "$work"
    shader_tree
    rm "$shaders/terrain.frag"
    refused "$shaders/terrain.frag: error: cannot be read: No such file or directory" --root "$work"
}

"check_$mode"
[ $failures -eq 0 ]
