#!/usr/bin/env bash
# training_programs.sh <quenlis_features> <quenlis_clean>
# Each frame of a recording gives one row of features, its length is kept by cleaning, and bad input gives one line and
# no output.
set -euo pipefail
features="$1"
clean="$2"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
cd "$work"
failures=0

complain() {
    echo "$*"
    failures=1
}

# expect_size <file> <bytes>
expect_size() {
    [ "$(stat -c %s "$1" || true)" = "$2" ] || complain "$1 has not $2 bytes"
}

# refuses <what the one line must say> <program> <argument>...
refuses() {
    ! "${@:2}" >output 2>&1 || complain "accepts what should be refused for: $1"
    [ "$(wc -l <output)" = 1 ] && grep -q "$1" output || complain "no line: $1, but: $(<output)"
    [ -z "$(find . -name 'out*' -not -name output)" ] || complain "leaves an output behind: $1"
}

# write_wav <rate> <channels> <samples>
write_wav() {
    python3 -c 'import sys, wave
rate, channels, samples = map(int, sys.argv[1:])
with wave.open("recording.wav", "wb") as out:
    out.setparams((channels, 2, rate, 0, "NONE", None))
    out.writeframes(b"\x10\x20" * samples)' "$@"
}

head -c $((4 * (5 * 480 + 100))) /dev/zero >silence.f32
write_wav 48000 1 1000
"$features" silence.f32 folder/silence.rows recording.wav recording.rows
"$features" --through-canceller silence.f32 canceller.rows
expect_size folder/silence.rows $((5 * 88 * 4))
expect_size recording.rows $((2 * 88 * 4))
expect_size canceller.rows $((5 * 88 * 4))
"$clean" --report recording.wav cleaned.wav
"$features" cleaned.wav cleaned.rows
expect_size cleaned.rows $((2 * 88 * 4))
[ "$(wc -l <cleaned.csv)" = 4 ] || complain "a report has a header and a row for each frame begun"

for program in "$features" "$clean"; do
    refuses "nowhere.wav: .*No such file" "$program" nowhere.wav out
    refuses "each recording needs an output" "$program" silence.f32 out silence.f32
    write_wav 48000 2 2000
    refuses "recording.wav: 2 channels, not one" "$program" recording.wav out
    write_wav 44100 1 1000
    refuses "recording.wav: a rate of 44100 Hz, not 48000" "$program" recording.wav out
done

# A file that can't grow stands for a full disk.
limited() { (ulimit -f 4 && trap '' XFSZ && "$@"); }
head -c 400000 /dev/zero >long.f32
refuses "cannot write .*out" limited "$features" long.f32 out
refuses "cannot write .*out" limited "$clean" long.f32 out
exit "$failures"
