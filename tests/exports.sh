#!/bin/sh
# Compares what a shared library exports with a list. A class stands for its members, its vtable
# and its type info.
# Usage: exports.sh LIBRARY LIST
names=$(nm --dynamic --defined-only --demangle "$1") || exit 1
printf '%s\n' "$names" | cut -d ' ' -f 3- |
    sed -E -e 's/^(vtable|typeinfo|typeinfo name) for /class /' \
        -e 's/^([A-Za-z]+[*&]* )?(Ky[A-Za-z]+(::Ky[A-Za-z]+)*)::[~a-zA-Z].*/class \2/' |
    LC_ALL=C sort -u | diff -u "$2" -
