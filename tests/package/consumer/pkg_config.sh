#!/usr/bin/env bash
# pkg_config.sh <work folder> <host.c>: builds and runs the host with the flags that pkg-config gives.
set -euo pipefail
work="$1" host="$2"
PKG_CONFIG_PATH="$(dirname "$(find "$work/installed" -name quenlis.pc)")"
export PKG_CONFIG_PATH
pkg-config --exact-version=1.0.9 quenlis
read -ra flags < <(pkg-config --cflags --libs quenlis)
cc -std=c11 "$host" -o "$work/pkg_config_consumer" "${flags[@]}"
LD_LIBRARY_PATH="$(pkg-config --variable=libdir quenlis)" "$work/pkg_config_consumer"
