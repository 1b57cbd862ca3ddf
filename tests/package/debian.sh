#!/usr/bin/env bash
# Builds the Debian packages twice, in two folders: they must be the same to the byte, and good in
# the eyes of lintian. Then installs them into a clean Debian and works with them there, on X.
# Usage, by root: debian.sh SOURCE_DIR WORK_DIR, both absolute; the latter keeps what was downloaded
set -euo pipefail
source=$1 work=$2
# shellcheck source-path=SCRIPTDIR source=lib.sh
source "$source/tests/package/lib.sh"
((EUID == 0)) || fail "only root can set up a clean Debian"
export LC_ALL=C

# ---- the packages, twice, by someone whose files are private
one=$work/one two=$work/a/longer/path
rm -rf "$one" "$two"
for tree in "$one" "$two"; do
    mkdir -p "$tree"
    (cd "$source" && git ls-files -z --cached --others --exclude-standard |
        xargs -0 cp --parents -t "$tree")
    (cd "$tree" && umask 077 && export SOURCE_DATE_EPOCH=1700000000 && cmake --preset package &&
        cmake --build --preset package && cpack --preset package)
done
debs=("$one"/build/package/*.deb)
((${#debs[@]} == 3)) || fail "not three packages: ${debs[*]}"
for file in "${debs[@]}" "$one"/build/package/{kygl,platform/*}/*.so; do
    cmp "$file" "${file/#$one/$two}" || fail "${file##*/} tells where it was built"
done
lintian --allow-root --fail-on error,warning --suppress-tags initial-upload-closes-no-bugs \
    "${debs[@]}"  # no upload to Debian, no bug to close

rm -rf "$work/unpacked"
for deb in "${debs[@]}"; do dpkg-deb -x "$deb" "$work/unpacked"; done
libdir=lib/$(dpkg-architecture -qDEB_HOST_MULTIARCH)
check_record "$work/unpacked/usr" "$libdir"

# ---- a clean Debian: the release of this machine, from where this machine has its packages
root=$work/root
rm -rf --one-file-system "$root"
mkdir "$root"
if [[ ! -s $work/root.tar ]]; then
    # shellcheck disable=SC2016  # the names are apt's
    read -r mirror release < <(apt-get indextargets --format '$(REPO_URI) $(RELEASE)' \
        'Created-By: Packages' | head -n 1)
    debootstrap --variant=minbase "$release" "$root" "$mirror"
    rm "$root/etc/apt/sources.list"
    cp -rt "$root/etc/apt" /etc/apt/{sources.list*,trusted.gpg.d}
    apt-config dump | grep ^Acquire:: >"$root/etc/apt/apt.conf.d/acquire"
    tar -C "$root" -cf "$work/root.tar.part" .
    mv "$work/root.tar.part" "$work/root.tar"
else
    tar -C "$root" -xf "$work/root.tar"
fi
mkdir -p "$work/archives"
cp -r "$work/archives" "$root/var/cache/apt/"
cp /etc/resolv.conf "$root/etc/"
cp -r "${debs[@]}" "$outside" "$root/root/"

inside() { chroot "$root" env -C /root HOME=/root DEBIAN_FRONTEND=noninteractive "$@"; }
inside apt-get update

# ---- the library and the tools by themselves, and a program that was built elsewhere
build_plain "$work/unpacked/usr" "$libdir" "$root/root/plain"
cp -r "$work/unpacked/usr/share/kygl" "$root/root/shaders"
inside sh -c 'apt-get install -y --no-install-recommends ./libkygl1_*.deb ./kygl-tools_*.deb'
for tool in "$work"/unpacked/usr/bin/*; do inside "${tool##*/}" --version; done
check_run inside ./plain shaders

# ---- what it takes to build there
inside sh -c 'apt-get install -y --no-install-recommends ./libkygl-dev_*.deb g++ pkg-config'
# shellcheck disable=SC2016  # in there
inside sh -c 'g++ -std=c++17 outside/main.cpp $(pkg-config --cflags --libs kygl x11) -o built'
check_run inside ./built /usr/share/kygl

cp -u "$root"/var/cache/apt/archives/*.deb "$work/archives/"
echo "${#debs[@]} packages, the same twice, at work in a clean Debian $(cat "$root/etc/debian_version")"
rm -rf --one-file-system "$root"
