# What the tests of an installation share. Sourced, not run.
# shellcheck shell=bash

outside=$(dirname "${BASH_SOURCE[0]}")/outside

fail() {
    echo "FAILED: $*" >&2
    exit 1
}

# check_record PREFIX LIBDIR: the record of the library there tells the size of the file.
check_record() {
    local library=$1/$2/libkygl.so
    "$1/bin/kyrecord" show "$library" | grep -qxE "size +$(stat -Lc %s "$library")" ||
        fail "the record of $library does not tell its size"
}

# build_plain PREFIX LIBDIR OUTPUT: the outside program, by g++ and pkg-config.
build_plain() {
    export PKG_CONFIG_PATH=$1/$2/pkgconfig
    read -ra cflags < <(pkg-config --cflags kygl)
    read -ra libs < <(pkg-config --libs kygl x11)
    g++ -std=c++17 "${cflags[@]}" "$outside/main.cpp" "${libs[@]}" -o "$3"
}

# check_run COMMAND...: one that runs the outside program.
check_run() { [[ $("$@") == "in use" ]] || fail "no program in use: $*"; }
