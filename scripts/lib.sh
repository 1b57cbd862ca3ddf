# What the two commands share: packages, configuring, a display. Sourced, not run.
# shellcheck shell=bash

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
logs=$root/build/log
mkdir -p "$logs"

fail() {
    echo "${0##*/}: $*" >&2
    exit 1
}

# quietly NAME COMMAND...: the output goes to a log and is shown only when the command fails.
quietly() {
    local log=$logs/$1.log
    shift
    "$@" >"$log" 2>&1 </dev/null || {
        cat "$log" >&2
        fail "failed: $*"
    }
}

# ---- packages

is_installed() {
    dpkg-query -W -f '${db:Status-Status}\n' "$1" 2>/dev/null | grep -qx installed
}

is_known() { [[ $1 && $(apt-cache madison "$1" 2>/dev/null) ]]; }

# missing_packages GROUP...: one name for each line of the list of which nothing is installed.
missing_packages() {
    local group package other
    while read -r group package other; do
        [[ $package && " $* " == *" $group "* ]] || continue
        if is_installed "$package" || is_installed "${other:-$package}"; then continue; fi
        if ! is_known "$package" && is_known "$other"; then package=$other; fi
        echo "$package"
    done <"$root/scripts/packages"
}

# install_packages GROUP...: as root or through sudo. Where nothing is missing, apt is left alone.
install_packages() {
    local missing sudo=()
    command -v dpkg-query >/dev/null || return 0  # no Debian: CMake tells what it does not find
    mapfile -t missing < <(missing_packages "$@")
    ((${#missing[@]} > 0)) || return 0

    if ((EUID != 0)); then
        sudo=(sudo)
        command -v sudo >/dev/null || fail "packages are missing; as root, run:" \
            "apt-get update && apt-get install --no-install-recommends ${missing[*]}"
    fi
    echo "installing ${missing[*]}"
    "${sudo[@]}" apt-get update >"$logs/update.log" 2>&1 || cat "$logs/update.log" >&2
    mapfile -t missing < <(missing_packages "$@")
    quietly packages "${sudo[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get install -y --no-install-recommends "${missing[@]}"
}

# ---- configuring

# configure PRESET [ARGUMENT...]: once, and again when the presets change. Arguments leave parts
# out: they are satisfied by a folder where more is configured, and never the other way round.
configure() {
    local mark=$root/build/$1/configured
    if [[ $mark -nt $root/CMakePresets.json && ($# -gt 1 || ! -s $mark) ]]; then return; fi
    (cd "$root" && cmake --preset "$@") && printf '%s' "${*:2}" >"$mark"
}

# ---- display

xvfb=

# start_display: a display of our own on a free number, until the script ends in whatever way.
start_display() {
    local number
    exec 8< <(exec setpriv --pdeathsig TERM Xvfb -displayfd 1 -noreset -nolisten tcp \
        -screen 0 1280x1024x24 2>"$logs/xvfb.log")
    xvfb=$!
    trap stop_display EXIT
    trap 'exit 130' INT
    trap 'exit 143' TERM
    read -r -t 60 number <&8 || {
        cat "$logs/xvfb.log" >&2
        fail "Xvfb did not start"
    }
    exec 8<&-
    export DISPLAY=:$number
    unset XAUTHORITY
}

stop_display() {
    kill "$xvfb" 2>/dev/null || true
    wait "$xvfb" 2>/dev/null || true
}
