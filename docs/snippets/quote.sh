#!/bin/sh
# Compares the code of a page with the files that it is quoted from, or brings the page up to date.
# Every block of code names its file, and a part of it between two marks `//! [name]`; a part is
# shown without the indentation of its marks:
#
#     <!-- docs/snippets/first/first.cpp [draw] -->
#     ```cpp
#
# Usage, in the root of the tree: quote.sh check|update PAGE
quoted=$(awk '
    function fail(text) { print FILENAME ":" FNR ": " text >"/dev/stderr"; failed = 1 }
    function quote(file, part,    line, shown, found, indent) {
        shown = part == ""
        while ((getline line <file) > 0) {
            if (match(line, /^ *(\/\/|#)! \[.*\]$/)) {
                if (part == "" || index(line, "[" part "]") == 0) continue
                shown = !shown
                indent = match(line, /[^ ]/) - 1
            } else if (shown) {
                print substr(line, indent + 1)
                found = 1
            }
        }
        close(file)
        if (!found || (part != "" && shown)) fail("no " file " " part)
    }
    /^<!-- [^ ]+( \[.*\])? -->$/ { source = $2; part = $3; gsub(/[][]|-->/, "", part); print; next }
    /^```/ && inBlock { inBlock = 0; skip = 0; print; next }
    /^```/ {
        inBlock = 1
        print
        if (source != "") { quote(source, part); skip = 1 }
        else if ($0 ~ /^```(cpp|glsl|cmake)$/) fail("code that is quoted from nowhere")
    }
    !/^```/ && !skip { print }
    { source = "" }
    END { exit failed }' "$2") || exit 1
case $1 in
    check) printf '%s\n' "$quoted" | diff -u "$2" - ;;
    update) printf '%s\n' "$quoted" >"$2" ;;
    *) exit 2 ;;
esac
