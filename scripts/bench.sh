#!/usr/bin/env bash
# Builds the benchmarks and runs them all. Installs the Debian packages that are missing.
# Arguments go to every benchmark program, such as --benchmark_filter=room.
# shellcheck source-path=SCRIPTDIR source=prepare.sh
source "$(dirname "${BASH_SOURCE[0]}")/prepare.sh"

ensure_packages "${build_packages[@]}" libfftw3-dev libopenblas-dev libsoxr-dev libspeexdsp-dev
build bench
mapfile -t programs < <(find build/bench/bench -type f -executable -name 'quenlis_bench*' | sort)
[ ${#programs[@]} -gt 0 ] || fail "no benchmark was built"
for program in "${programs[@]}"; do
    say "Running $(basename "$program")"
    "$program" "$@"
done
