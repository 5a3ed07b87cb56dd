#!/usr/bin/env bash
# exported_symbols.sh <library> <header>
# The dynamic symbols that the shared library defines are the functions that the header declares, no more and
# no fewer, and programs will look for the library by its major version.
set -euo pipefail
library="$1" header="$2"

declared="$(sed -e 's,//.*,,' -e '/^#/d' "$header" | tr '\n' ' ' | grep -oE 'QNL_API [^(;]*\(' |
    sed -E 's/.*[ *]([A-Za-z0-9_]+)\($/\1/' | sort)"
exported="$(nm --dynamic --defined-only "$library" | awk '{ print $3 }' | sort)"
[ "$(wc -l <<<"$declared")" -ge 40 ] || { echo "the header was not understood"; exit 1; }
diff <(echo "$declared") <(echo "$exported") || {
    echo "< declared in the header and not exported; > exported and not declared"
    exit 1
}

soname="$(readelf --dynamic "$library" | sed -n 's/.*Library soname: \[\(.*\)\]/\1/p')"
[ "$soname" = libquenlis.so.1 ] || { echo "soname is '$soname'"; exit 1; }
