# Shared by the scripts: where we are, what is missing, how long things may take. Sourced, not run.
set -euo pipefail
ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$ROOT"

# Compiled objects are shared between checkouts of the same machine.
export CCACHE_BASEDIR="$ROOT" CCACHE_NOHASHDIR=1
JOBS=$(nproc)

say() { printf '%s\n' "== $*"; }
stop() {
    printf '%s\n' "$*" >&2
    exit 1
}

LINUX_PACKAGES="g++ cmake ninja-build ccache pkg-config libcurl4-openssl-dev libssl-dev nlohmann-json3-dev \
libgtest-dev libgmock-dev libcpp-httplib-dev libsecp256k1-dev"

# Installs those of the named packages that are missing.
install_packages() {
    local missing=() package
    for package in "$@"; do
        dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed' || missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] && return 0
    command -v apt-get >/dev/null || stop "These packages are missing and there is no apt-get here: ${missing[*]}"
    local as_root=()
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null || stop "Missing packages need root to install: ${missing[*]}"
        as_root=(sudo)
    fi
    say "installing ${missing[*]}"
    local log
    log=$(mktemp)
    if ! "${as_root[@]}" apt-get update >"$log" 2>&1 ||
        ! "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends "${missing[@]}" >>"$log" 2>&1; then
        tail -n 20 "$log" >&2
        rm -f "$log"
        stop "Installing ${missing[*]} failed; the last lines of apt-get are above."
    fi
    rm -f "$log"
}

# Configures and builds a preset; further arguments are targets.
build_preset() {
    local preset=$1
    shift
    say "building ($preset)"
    cmake --preset "$preset" >"build-$preset.log" 2>&1 || {
        cat "build-$preset.log" >&2
        rm -f "build-$preset.log"
        stop "Configuring the preset $preset failed."
    }
    rm -f "build-$preset.log"
    cmake --build --preset "$preset" -j "$JOBS" ${1:+--target "$@"} || stop "Building the preset $preset failed."
}
