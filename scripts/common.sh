# SPDX-License-Identifier: GPL-3.0-or-later
# What the scripts share: the packages that a build needs, and a build that is
# silent unless it fails. Read with "source"; leaves the shell in the root of
# the project.

set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

packages=(cmake ninja-build g++ ccache pkg-config python3
          libgsl-dev libopenblas-dev libgtest-dev libbenchmark-dev
          # the Debian package, and what checks it
          dpkg-dev desktop-file-utils libxml2-utils shared-mime-info
          # the desktop, and what its tests look at it with
          qt6-base-dev fonts-liberation xvfb openbox xdotool x11-utils imagemagick xclip)

# Runs a command; what it says is shown, on standard error, only if it fails.
quietly() {
    local log status=0
    log=$(mktemp)
    "$@" >"$log" 2>&1 </dev/null || status=$?
    [ $status -eq 0 ] || cat "$log" >&2
    rm -f "$log"
    return $status
}

as_root() {
    if [ "$(id -u)" -eq 0 ]; then
        "$@"
    elif command -v sudo >/dev/null; then
        sudo "$@"
    else
        echo "These packages are needed, and neither root nor sudo is at hand: ${missing[*]}" >&2
        return 1
    fi
}

install_packages() {
    command -v dpkg-query >/dev/null || return 0
    missing=()
    local package
    for package in "${packages[@]}"; do
        [ "$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null)" = installed ] || missing+=("$package")
    done
    [ ${#missing[@]} -gt 0 ] || return 0
    echo "Installing ${missing[*]}" >&2
    quietly as_root apt-get update
    quietly as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends "${missing[@]}"
}

# build PRESET [TARGET...]: configures once, then brings the targets up to date.
build() {
    local preset=$1 folder=$root/build
    shift
    [ "$preset" = release ] || folder=$root/build-$preset
    [ -f "$folder/build.ninja" ] || quietly cmake -S "$root" --preset "$preset"
    quietly cmake --build "$folder" ${1:+--target "$@"}
}
