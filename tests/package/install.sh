#!/usr/bin/env bash
# install.sh <build folder> <work folder> <version>
# Installs the build to <work folder>/installed for the consumers: header, library and the two package
# descriptions, and nothing else.
set -euo pipefail
build="$1" work="$2" version="$3"
rm -rf "$work/built" "$work/installed"
mkdir -p "$work"
cmake --install "$build" --prefix "$work/built" >/dev/null
# An installed tree may be moved.
mv "$work/built" "$work/installed"

expected="include/quenlis.h
lib/cmake/quenlis/quenlis-config-version.cmake
lib/cmake/quenlis/quenlis-config.cmake
lib/cmake/quenlis/quenlis-targets-CONFIGURATION.cmake
lib/cmake/quenlis/quenlis-targets.cmake
lib/libquenlis.so
lib/libquenlis.so.${version%%.*}
lib/libquenlis.so.$version
lib/pkgconfig/quenlis.pc"
installed="$(cd "$work/installed" && find . ! -type d | sed -E -e 's,^\./,,' -e 's,^lib(64|/[^/]*-linux-[^/]*)/,lib/,' \
    -e 's/targets-[a-z]+\.cmake/targets-CONFIGURATION.cmake/' | LC_ALL=C sort)"
diff <(LC_ALL=C sort <<<"$expected") <(echo "$installed") || {
    echo "< expected in the installed tree; > found there"
    exit 1
}
