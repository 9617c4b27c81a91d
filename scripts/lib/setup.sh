# Sourced by the scripts: where the project is, and how to get what it needs. Not a command of its own.

set -euo pipefail

project=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
cd "$project"

say() { printf '%s\n' "== $*" >&2; }
fail() { printf '%s\n' "$*" >&2; exit 1; }

# install_packages SECTION...
# Installs the Debian packages of the named sections of debian-packages.txt that are missing: as root, or through sudo.
# Without either it prints the command to run and stops.
install_packages() {
    local section wanted=() missing=()
    for section in "$@"; do
        mapfile -t -O "${#wanted[@]}" wanted < <(awk -v want="# --- $section" '
            /^# ---/ { inside = ($0 == want); next }
            inside && !/^#/ && NF { print $1 }' scripts/debian-packages.txt)
    done
    command -v dpkg-query >/dev/null || fail "This is no Debian system. The packages to find for it: ${wanted[*]}"
    local installed
    installed=$(dpkg-query -W -f '${db:Status-Abbrev} ${Package}\n' | awk '$1 ~ /^[hi]i/ { print $2 }')
    local package
    for package in "${wanted[@]}"; do
        grep -qxF -- "$package" <<<"$installed" || missing+=("$package")
    done
    ((${#missing[@]})) || return 0

    local as_root=()
    if ((EUID != 0)); then
        if command -v sudo >/dev/null && sudo -n true 2>/dev/null || { [[ -t 0 ]] && command -v sudo >/dev/null; }; then
            as_root=(sudo)
        else
            fail "These packages are missing. Install them, then try again:
  apt-get update && apt-get install --no-install-recommends ${missing[*]}"
        fi
    fi
    say "Installing ${missing[*]}"
    "${as_root[@]}" apt-get update -qq
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" \
        >/dev/null
}

# build PRESET [TARGET...]
build() {
    local preset=$1 log
    shift
    if [[ ! -f build/$preset/build.ninja ]]; then
        say "Configuring ($preset)"
        log=$(cmake --preset "$preset" 2>&1) || fail "$log"
    fi
    say "Building ($preset)"
    cmake --build --preset "$preset" ${1:+--target "$@"}
}
