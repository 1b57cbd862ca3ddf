#!/usr/bin/env bash
# Installs what was built, moves it and builds an outside project with it, on X.
# Usage: prefix.sh SOURCE_DIR BUILD_DIR, both absolute
set -euo pipefail
source=$1 build=$2
# shellcheck source-path=SCRIPTDIR source=lib.sh
source "$source/tests/package/lib.sh"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

build_by_cmake() {  # PREFIX_PATH, into $work/outside
    cmake --fresh -G Ninja -S "$outside" -B "$work/outside" "-DCMAKE_PREFIX_PATH=$1"
    cmake --build "$work/outside"
}

# ---- an installation that was moved
cmake --install "$build" --prefix "$work/before"
mv "$work/before" "$work/moved"
prefix=$work/moved
check_record "$prefix" lib
! grep -rIlF -e "$work" -e "$build" -e "$source" "$prefix" || fail "these tell where they were"
! ldd "$prefix/lib/libkygl.so" "$prefix"/bin/* | grep 'not found' || fail "libraries are not found"

build_by_cmake "$prefix"
check_run "$work/outside/outside" "$(cat "$work/outside/data_dir")"

# ---- shaders that its build checks: once, and again when an included file changes
rebuild() { cmake --build "$work/outside" 2>&1 | tee "$work/log"; }
rebuild | grep -qF 'no work to do' || fail "shaders that did not change are checked again"
shader=$prefix/share/kygl/share/shaders/gallery/light.glsl
[[ -e $shader ]]
cp "$shader" "$work/kept"
echo 'float fault() { return wrong; }' >>"$shader"
! rebuild || fail "a fault in an included file does not stop the build"
grep -E "^$shader:[0-9]+: error: " "$work/log" || fail "the build does not name the fault"
cp "$work/kept" "$shader"
rebuild
touch "$shader"
env -u DISPLAY cmake --build "$work/outside" | grep -F 'no X display' ||
    fail "a check that is left out is not seen"
! rebuild | grep -F 'no work to do' || fail "what was left out is not made up for"

build_plain "$prefix" lib "$work/plain"
LD_LIBRARY_PATH=$prefix/lib check_run "$work/plain" "$(pkg-config --variable=datadir kygl)"

mapfile -t headers < <(cd "$prefix/include" && find . -name '*.h' -printf '%P\n')
for header in "${headers[@]}"; do
    g++ -std=c++17 -Wall -Wextra -Werror -fsyntax-only "-I$prefix/include" -include "$header" \
        -x c++ /dev/null || fail "$header does not stand alone"
done

# ---- stripped
cmake --install "$build" --prefix "$work/stripped" --strip
check_record "$work/stripped" lib
for tree in "$prefix" "$work/stripped"; do
    "$prefix/bin/kyrecord" show "$tree/lib/libkygl.so" | grep -v ^size >"$tree/record"
done
cmp "$prefix/record" "$work/stripped/record" || fail "--strip changes more of the record"

# ---- on layers of a site's own, which here are ours by themselves
for layer in kylib sogl; do cmake --install "$build/platform/$layer" --prefix "$work/site"; done
cmake -G Ninja -S "$source" -B "$work/build" "-DCMAKE_PREFIX_PATH=$work/site" \
    -DKYGL_USE_SYSTEM_KYLIB=ON -DKYGL_USE_SYSTEM_SOGL=ON \
    -DKYGL_BUILD_TESTS=OFF -DKYGL_BUILD_BENCH=OFF -DKYGL_BUILD_EXAMPLES=OFF
! grep -F /platform/ "$work/build/compile_commands.json" || fail "uses a layer of ours"
cmake --build "$work/build"
cmake --install "$work/build" --prefix "$work/own"
[[ ! $(find "$work/own" -name '*kylib*' -o -name '*sogl*') ]] || fail "installs a layer of ours"
LD_LIBRARY_PATH=$work/site/lib build_by_cmake "$work/own;$work/site"
LD_LIBRARY_PATH=$work/site/lib check_run "$work/outside/outside" "$work/own/share/kygl"

echo "${#headers[@]} headers, outside projects by CMake and pkg-config, layers of a site's own"
