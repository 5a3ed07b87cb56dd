#!/usr/bin/env bash
# The slower checks: formatting, clang-tidy, every test under AddressSanitizer with
# UndefinedBehaviorSanitizer and under ThreadSanitizer, the tools of training, and a minute of each fuzz target.
# Installs the Debian packages that are missing.
#
#     check.sh [formatting|tidy|asan|tsan|training|fuzz]...     all of them when none is named
#
# QUENLIS_FUZZ_SECONDS in the environment changes the minute.
# shellcheck source-path=SCRIPTDIR source=prepare.sh
source "$(dirname "${BASH_SOURCE[0]}")/prepare.sh"

fuzz_seconds="${QUENLIS_FUZZ_SECONDS:-60}"
# The suppressors are what clang-tidy needs to read the program that compares with them.
check_packages=(clang clang-format clang-tidy libclang-rt-dev libspeexdsp-dev libwebrtc-audio-processing-dev)
training_packages=(python3-torch python3-scipy python3-soundfile)

check_formatting() {
    say "Checking the formatting"
    find include src tools tests examples bench fuzz \( -name '*.h' -o -name '*.cpp' -o -name '*.c' \) -print0 |
        xargs -0 clang-format --dry-run --Werror
}

# The engine, the hosts, the tools, the benchmarks and the fuzz targets. Tests are left to the compiler's warnings:
# the macros of the test framework take most of the time and hide what matters.
check_tidy() {
    say "Configuring for clang-tidy"
    cmake --fresh --preset tidy
    say "Running clang-tidy ($jobs jobs)"
    find src tools examples bench fuzz -name '*.cpp' -print0 |
        xargs -0 -P "$jobs" -n 1 clang-tidy -p build/tidy --quiet
}

# The shadow memory of ThreadSanitizer does not fit under the address randomisation of some kernels. Some
# containers forbid to switch it off: then the tests run as they are.
without_randomisation() {
    if setarch --addr-no-randomize true 2>/dev/null; then
        setarch --addr-no-randomize "$@"
    else
        "$@"
    fi
}

check_sanitizer() {
    build "$1"
    say "Running the tests (preset $1)"
    without_randomisation ctest --preset "$1" --parallel "$jobs"
}

check_asan() {
    check_sanitizer asan
}

check_tsan() {
    check_sanitizer tsan
}

# The Python that Debian's packages belong to: another may come first on the path.
check_training() {
    ensure_packages "${training_packages[@]}"
    build release
    say "Running the tests of the training tools"
    QUENLIS_BUILD="$PWD/build/release" /usr/bin/python3 tests/training/test_training.py
}

# fuzz_target <name>: keeps what it learns in build/fuzz/corpus, so that the next run starts from there, and
# writes an input that breaks something to build/fuzz/found. Its output appears in one piece.
fuzz_target() {
    local name="$1" log="build/fuzz/$1.log" failed=0
    mkdir -p "build/fuzz/corpus/$name" "build/fuzz/found/$name"
    "build/fuzz/fuzz/fuzz_$name" -max_total_time="$fuzz_seconds" -timeout=20 -print_final_stats=1 \
        -verbosity=0 -dict="fuzz/$name.dict" -artifact_prefix="build/fuzz/found/$name/" \
        "build/fuzz/corpus/$name" "fuzz/corpus/$name" >"$log" 2>&1 || failed=1
    say "Fuzzed $name for $fuzz_seconds seconds"
    cat "$log"
    return "$failed"
}

check_fuzz() {
    build fuzz
    say "Fuzzing ($jobs targets at a time)"
    export -f fuzz_target say
    export fuzz_seconds
    find fuzz -maxdepth 1 -name '*.cpp' -exec basename -s .cpp {} + | sort |
        xargs -P "$jobs" -I '{}' bash -euo pipefail -c 'fuzz_target {}'
}

[ $# -gt 0 ] || set -- formatting tidy asan tsan training fuzz
for check in "$@"; do
    declare -F "check_$check" >/dev/null || fail "no such check: $check"
done
ensure_packages "${build_packages[@]}" "${check_packages[@]}"
for check in "$@"; do
    "check_$check"
    say "Passed: $check"
done
