#!/usr/bin/env bash
# Builds the benchmarks and runs them all. Installs the Debian packages that are missing.
# Arguments go to every benchmark program, such as --benchmark_filter=room.
# shellcheck source-path=SCRIPTDIR source=prepare.sh
source "$(dirname "${BASH_SOURCE[0]}")/prepare.sh"

ensure_packages "${build_packages[@]}"
build bench
while IFS= read -r program; do
    say "Running $(basename "$program")"
    "$program" "$@"
done < <(find build/bench/bench -maxdepth 1 -type f -executable | sort)
