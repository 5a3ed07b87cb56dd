#!/usr/bin/env bash
# public_header.sh <header>
# The header compiles without a warning, alone and twice in one file, as C and as C++, with every compiler
# that is there; records and enumerations have the promised sizes in both languages.
set -euo pipefail
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
cp "$1" "$work/quenlis.h"

cat >"$work/host.c" <<'END'
#include "quenlis.h"
#include "quenlis.h"
_Static_assert(sizeof(qnl_error_code) == 4 && sizeof(qnl_audio_control) == 4, "32-bit enumerations");
_Static_assert(sizeof(qnl_library_configuration) == 20, "a record of 32-bit numbers");
_Static_assert(sizeof(qnl_participant_configuration) == 12 && sizeof(qnl_seat) == 24, "records");
END
cat >"$work/host.cpp" <<'END'
#include "quenlis.h"
#include "quenlis.h"
#include <type_traits>
template <typename Enumeration>
constexpr bool is_fixed = std::is_same<typename std::underlying_type<Enumeration>::type, int32_t>::value;
static_assert(is_fixed<qnl_error_code> && is_fixed<qnl_log_level> && is_fixed<qnl_participant_type> &&
              is_fixed<qnl_audio_control> && is_fixed<qnl_device_types>, "fixed 32-bit enumerations");
static_assert(sizeof(qnl_library_configuration) == 20, "as in C");
static_assert(sizeof(qnl_participant_configuration) == 12 && sizeof(qnl_seat) == 24, "as in C");
END

warnings=(-Wall -Wextra -Wpedantic -Wshadow -Werror -fsyntax-only)
for compiler in gcc clang; do
    if command -v "$compiler" >/dev/null; then
        "$compiler" -std=c11 "${warnings[@]}" "$work/host.c"
        "$compiler" -x c++ -std=c++17 "${warnings[@]}" "$work/host.cpp"
        echo "$compiler: C11 and C++17"
    fi
done
