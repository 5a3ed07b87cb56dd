#!/usr/bin/env bash
# install_data.sh <project source>
# A data set is replaced as a whole once it is right, and a wrong one leaves what was there.
set -euo pipefail
source="$1"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
data="$work/data"
cp -r "$source/data" "$data"
failures=0

install() {
    "$source/tools/install_data" --data "$data" "$@" >"$work/output" 2>&1
}

complain() {
    echo "$*"
    cat "$work/output"
    failures=1
}

# refuses <what the one line must say> <set> <source>
refuses() {
    local reason="$1"
    shift
    ! install "$@" || complain "installs what should be refused for: $reason"
    [ "$(wc -l <"$work/output")" = 1 ] && grep -q "^install_data: .*$reason" "$work/output" || complain "no line: $reason"
    diff -r "$source/data" "$data" >"$work/output" || complain "the data changed: $reason"
}

# A copy of the tables to spoil.
set="$work/set"
fresh() {
    rm -rf "$set"
    cp -r "$source/data/noise_canceller" "$set"
}

fresh && truncate -s -4 "$set/lstm_1_bias_48k.f32"
refuses "lstm_1_bias_48k.f32: 2044 bytes, not the 2048 of 512" noise_canceller "$set"
fresh && rm "$set/dense_bias_48k.f32"
refuses "dense_bias_48k.f32 is missing" noise_canceller "$set"
fresh && touch "$set/dense_2_bias_48k.f32"
refuses "dense_2_bias_48k.f32 belongs to no set" noise_canceller "$set"
fresh && printf '\x00\x00\xc0\x7f' | dd of="$set/conv1d_1_weights_48k.f32" bs=4 seek=77 conv=notrunc status=none
refuses "conv1d_1_weights_48k.f32: holds a value that is not finite" noise_canceller "$set"
refuses "No such file" noise_canceller "$work/nowhere"

# The model text with one number in each line behind the header, and a change.
text="$work/model.txt"
spoil() {
    sed '2,$s/ /\n/g' "$source/data/recurrent_denoiser/model.txt" | sed "$1" >"$text"
}

spoil '$d' && refuses "ends within vad_output, 1 numbers short" recurrent_denoiser "$text"
spoil '$a 5' && refuses "1 numbers more" recurrent_denoiser "$text"
spoil '100d' && refuses "vad_gru has" recurrent_denoiser "$text"
spoil '3s/.*/25/' && refuses "input_dense has 42 inputs and 25 neurons, not 42 and 24" recurrent_denoiser "$text"
spoil '9s/.*/128/' && refuses "the weight 128, outside" recurrent_denoiser "$text"
spoil '4s/.*/3/' && refuses "input_dense has activation 3" recurrent_denoiser "$text"
spoil '9s/.*/x/' && refuses "input_dense: invalid" recurrent_denoiser "$text"
spoil '1s/1$/2/' && refuses "does not begin with" recurrent_denoiser "$text"

# A file that can't grow stands for a full disk.
fresh && printf '\x00\x00\x00\x3f' | dd of="$set/lstm_bias_48k.f32" bs=4 conv=notrunc status=none
if (ulimit -f 200 && install noise_canceller "$set"); then
    complain "does not notice a full disk"
fi
diff -r "$source/data" "$data" >>"$work/output" || complain "a full disk left half a set"

# A run that was cut off between its two renames.
mv "$data/noise_canceller" "$data/noise_canceller.former"
install noise_canceller "$set" || complain "refuses a good set"
grep -q "1 of 20 files changed" "$work/output" || complain "does not say what changed"
diff -r "$set" "$data/noise_canceller" || complain "did not install the set"
[ "$(ls "$data")" = "$(ls "$source/data")" ] || complain "leaves something behind"
spoil '9s/.*/1/' && install recurrent_denoiser "$text" && diff "$text" "$data/recurrent_denoiser/model.txt" ||
    complain "did not install the model"
exit "$failures"
