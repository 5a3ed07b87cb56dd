#!/usr/bin/env bash
# Builds the library with its tests, warnings being errors, and runs every test.
# Installs the Debian packages that are missing. Takes no arguments.
# shellcheck source-path=SCRIPTDIR source=prepare.sh
source "$(dirname "${BASH_SOURCE[0]}")/prepare.sh"

ensure_packages "${build_packages[@]}"
build release
say "Running the tests"
ctest --preset release --parallel "$jobs"
