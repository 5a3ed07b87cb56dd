#!/usr/bin/env bash
# add_subdirectory.sh <work folder> <host.c> <project source> [compiler launcher]
# Builds and runs the host with the library's sources as a part of its own build; installing that build
# installs nothing of the library.
set -euo pipefail
here="$(cd "$(dirname "$0")" && pwd)" work="$1" host="$2" source="$3" launcher="${4:-}"
quick=(-DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS_DEBUG=-O0 -DQUENLIS_SCALAR_ONLY=ON)
cmake -S "$here" -B "$work/add_subdirectory" -DQUENLIS_SOURCE="$source" -DCONSUMER_HOST="$host" \
    -DCMAKE_CXX_COMPILER_LAUNCHER="$launcher" "${quick[@]}"
cmake --build "$work/add_subdirectory" --target consumer --parallel 2
"$work/add_subdirectory/consumer"
cmake --install "$work/add_subdirectory" --prefix "$work/nothing"
[ -z "$(find "$work/nothing" ! -type d 2>/dev/null)" ]
