# shellcheck shell=bash
# Common ground of the scripts in this folder: sourced, never run. It moves to the root of the project and
# offers `say`, `ensure_packages` and `build`.
#
# QUENLIS_JOBS in the environment limits the parallel jobs of a build; all processors otherwise.

set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

jobs="${QUENLIS_JOBS:-$(nproc)}"

# What every build needs; the scripts add what only they use.
# shellcheck disable=SC2034 # read by the scripts
build_packages=(build-essential cmake ninja-build pkg-config nlohmann-json3-dev libhwy-dev robin-map-dev
    libcli11-dev libsndfile1-dev libgtest-dev libgmock-dev libbenchmark-dev python3)

say() {
    printf '\n==> %s\n' "$*"
}

fail() {
    printf 'error: %s\n' "$*" >&2
    exit 1
}

is_installed() {
    [ "$(dpkg-query -W -f='${db:Status-Status}' "$1" 2>/dev/null)" = installed ]
}

as_root() {
    if [ "$(id -u)" -eq 0 ]; then
        "$@"
    else
        sudo "$@"
    fi
}

quiet_apt() {
    as_root env DEBIAN_FRONTEND=noninteractive apt-get -y -o Acquire::Retries=3 -o DPkg::Lock::Timeout=300 "$@"
}

# ensure_packages <package>...: installs the Debian packages that are not there yet; silent if none is missing.
ensure_packages() {
    local missing=() package log
    if ! command -v dpkg-query >/dev/null; then
        echo "Not a Debian system: these packages, or their like, must be installed already: $*"
        return
    fi
    for package in "$@"; do
        is_installed "$package" || missing+=("$package")
    done
    [ ${#missing[@]} -gt 0 ] || return 0
    [ "$(id -u)" -eq 0 ] || command -v sudo >/dev/null ||
        fail "these packages are missing, and installing them needs root or sudo: ${missing[*]}"
    say "Installing ${missing[*]}"
    log="$(mktemp)"
    # A stale package list may still do, so a failed update is not the end.
    { quiet_apt update || true; quiet_apt install --no-install-recommends "${missing[@]}"; } >"$log" 2>&1 || {
        cat "$log" >&2
        fail "apt-get could not install: ${missing[*]}"
    }
    rm -f "$log"
}

# build <preset> [target]...: configures and builds under build/<preset>, everything if no target is named.
build() {
    local preset="$1" launcher=() targets=()
    shift
    if command -v ccache >/dev/null; then
        # What one clone has compiled serves the next one.
        export CCACHE_BASEDIR="$PWD" CCACHE_NOHASHDIR=1
        launcher=(-DCMAKE_C_COMPILER_LAUNCHER=ccache -DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
    fi
    [ $# -eq 0 ] || targets=(--target "$@")
    say "Building ${*:-everything} (preset $preset, $jobs jobs)"
    # Fresh: a changed compiler or a moved folder would otherwise leave half of an old configuration behind.
    cmake --fresh --preset "$preset" "${launcher[@]}"
    cmake --build --preset "$preset" --parallel "$jobs" "${targets[@]}"
}
