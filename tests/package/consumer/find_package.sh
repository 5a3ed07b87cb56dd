#!/usr/bin/env bash
# find_package.sh <work folder> <host.c>: builds and runs the host with find_package(quenlis).
set -euo pipefail
here="$(cd "$(dirname "$0")" && pwd)" work="$1" host="$2"
cmake -S "$here" -B "$work/find_package" -DCMAKE_PREFIX_PATH="$work/installed" -DCONSUMER_HOST="$host"
cmake --build "$work/find_package"
"$work/find_package/consumer"
