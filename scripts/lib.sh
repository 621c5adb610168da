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

# Configures and builds a preset with the sandbox's settings, whatever that folder was configured with before; further
# arguments are targets.
build_preset() {
    local preset=$1
    shift
    say "building ($preset)"
    cmake --preset "$preset" -DBURSARIA_SETTINGS=settings/sandbox.json >"build-$preset.log" 2>&1 || {
        cat "build-$preset.log" >&2
        rm -f "build-$preset.log"
        stop "Configuring the preset $preset failed."
    }
    rm -f "build-$preset.log"
    cmake --build --preset "$preset" -j "$JOBS" ${1:+--target "$@"} || stop "Building the preset $preset failed."
}

WINDOWS_PACKAGES="g++-mingw-w64-x86-64-posix googletest"
WINE_PACKAGES="fonts-open-sans wine wine64 xvfb xauth"

# Has a command run when the script ends, the last one first.
AT_EXIT=()
at_exit() {
    AT_EXIT=("$*" "${AT_EXIT[@]}")
    trap 'for command in "${AT_EXIT[@]}"; do eval "$command" || true; done' EXIT
}

# A display of no screen on a free number, until the script ends.
start_display() {
    local number
    number=$(mktemp)
    Xvfb -displayfd 3 -screen 0 1680x1300x24 -nolisten tcp 3>"$number" >/dev/null 2>&1 &
    at_exit "kill $! 2>/dev/null"
    for _ in $(seq 100); do
        [ -s "$number" ] && break
        sleep 0.1
    done
    [ -s "$number" ] || stop "Xvfb did not start within ten seconds."
    DISPLAY=:$(cat "$number")
    export DISPLAY
    rm -f "$number"
}

# Wine in a folder of this checkout, without the boxes that offer to install more of it.
wine_environment() {
    export WINEPREFIX=${WINEPREFIX:-$ROOT/build/wine} WINEDEBUG=${WINEDEBUG:--all} WINEDLLOVERRIDES="mscoree,mshtml="
}

wine_setting() { timeout 60 wine reg add "$1" /v "$2" /t REG_SZ /d "$3" /f </dev/null >/dev/null 2>&1 || true; }

# Makes that folder once, finds a display, and keeps Wine's server until the script ends, so that each program starts
# quickly.
prepare_wine() {
    wine_environment
    # A script that another has started finds that folder ready.
    [ "${BURSARIA_WINE_READY:-}" != "$WINEPREFIX" ] || return 0
    export BURSARIA_WINE_READY=$WINEPREFIX
    mkdir -p "$(dirname "$WINEPREFIX")"
    local own_display=0
    [ -n "${DISPLAY:-}" ] || {
        start_display
        own_display=1
    }
    if [ ! -f "$WINEPREFIX/complete" ]; then
        say "preparing Wine"
        timeout 300 wineboot -i </dev/null >"$WINEPREFIX.log" 2>&1 || {
            tail -n 20 "$WINEPREFIX.log" >&2
            stop "Wine could not prepare $WINEPREFIX; its last words are above."
        }
        timeout 60 wineserver -w || true
        touch "$WINEPREFIX/complete"
    fi
    timeout 60 wineserver -p </dev/null >/dev/null 2>&1 || true
    at_exit "timeout 20 wineserver -k"
    # A letter as wide as that of Windows; and where no window manager runs, Wine has to draw the frames itself.
    wine_setting 'HKCU\Software\Wine\Fonts\Replacements' 'Segoe UI' 'Open Sans'
    wine_setting 'HKCU\Software\Wine\X11 Driver' Managed "$([ "$own_display" -eq 1 ] && echo N || echo Y)"
}

# A path of this machine as a Windows program sees it.
windows_path() {
    local path=${1//\//\\}
    printf 'Z:%s' "$path"
}

# The Windows build, with its libraries.
build_windows() {
    BURSARIA_WINDOWS_LIBS=$(scripts/windows-libs | tail -n 1)
    export BURSARIA_WINDOWS_LIBS
    build_preset windows "$@"
}

# The play-money chain with its services, until the script ends; `bin`, `work` and `holders` are the caller's.
control=http://127.0.0.1:18605/sandbox
start_sandbox() {
    say "starting the sandbox with $holders holders"
    "$bin/bursaria-sandbox" --folder "$work/data" --holders "$holders" >"$work/sandbox.log" 2>&1 &
    local sandbox=$!
    at_exit "kill $sandbox 2>/dev/null; wait $sandbox 2>/dev/null"
    for _ in $(seq 300); do
        curl -sf "$control/world" -o "$work/world.json" 2>/dev/null && break
        kill -0 "$sandbox" 2>/dev/null || {
            cat "$work/sandbox.log" >&2
            stop "The sandbox did not start; its own words are above."
        }
        sleep 0.1
    done
    [ -s "$work/world.json" ] || stop "The sandbox did not answer within 30 seconds."
}
count_transactions() { curl -sf "$control/chain" | jq '.transactions | length'; }
