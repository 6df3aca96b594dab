# Shared by the scripts beside it; meant to be sourced. Sets `root` to the top of the tree.
# shellcheck shell=bash

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
export DEBIAN_FRONTEND=noninteractive

say() { printf '== %s\n' "$*"; }

fail() {
    printf 'FAILED: %s\n' "$*" >&2
    exit 1
}

as_root() {
    if [ "$(id -u)" -eq 0 ]; then "$@"; else sudo "$@"; fi
}

# The packages of the named areas (files in packages.d) that are not on this machine.
missing_packages() {
    local area name
    for area in "$@"; do
        while read -r name; do
            case $name in '' | '#'*) continue ;; esac
            dpkg-query -W -f='${db:Status-Status}\n' "$name" 2>/dev/null | grep -qx installed ||
                printf '%s\n' "$name"
        done <"$root/scripts/packages.d/$area.txt"
    done | sort -u
}

# Installs what the named areas need, from Debian's own packages.
need_packages() {
    local missing
    mapfile -t missing < <(missing_packages "$@")
    [ "${#missing[@]}" -eq 0 ] && return
    say "installing ${#missing[@]} packages: ${missing[*]}"
    local log
    log=$(mktemp)
    if ! { as_root apt-get update && as_root apt-get install -y --no-install-recommends "${missing[@]}"; } \
        >"$log" 2>&1; then
        tail -n 20 "$log" >&2
        fail "apt-get could not install them; the whole output is in $log"
    fi
    rm -f "$log"
}

# configure PRESET [options]: quiet unless it fails. Uses ccache where the machine has it.
configure() {
    local preset=$1 launcher=()
    shift
    if command -v ccache >/dev/null; then
        launcher=(-DCMAKE_C_COMPILER_LAUNCHER=ccache -DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
    fi
    local log="$root/build/$preset.configure.log"
    mkdir -p "$root/build"
    if ! (cd "$root" && cmake --preset "$preset" "${launcher[@]}" "$@") >"$log" 2>&1; then
        tail -n 30 "$log" >&2
        fail "configuring '$preset'; the whole output is in $log"
    fi
}

# build PRESET [targets]: prints compiler messages only when something is wrong.
build() {
    local preset=$1
    shift
    local log="$root/build/$preset.build.log"
    local targets=()
    [ "$#" -gt 0 ] && targets=(--target "$@")
    if ! (cd "$root" && cmake --build "build/$preset" --parallel "$(nproc)" "${targets[@]}") \
        >"$log" 2>&1; then
        grep -nE 'error|FAILED|Error' "$log" | head -n 30 >&2
        tail -n 20 "$log" >&2
        fail "building '$preset'; the whole output is in $log"
    fi
}
