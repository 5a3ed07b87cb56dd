#!/usr/bin/env bash
# Holds a conference of recordings and writes what every participant hears to out/demo/.
# Without arguments the talkers are speech made on the spot and recordings that Debian ships; arguments go to
# the conference tool in their place: recordings of your own, and options (try --help).
# Installs the Debian packages that are missing.
caller="$PWD"
# shellcheck source-path=SCRIPTDIR source=prepare.sh
source "$(dirname "${BASH_SOURCE[0]}")/prepare.sh"

mixes="$PWD/out/demo"
tool="$PWD/build/release/examples/conference/quenlis_conference"
shipped=/usr/share/sounds/alsa

# speak <name> <voice> <words a minute> <text>: a recording at the 22050 Hz of espeak-ng, below out/demo/talkers/.
speak() {
    local spoken
    spoken="$(mktemp --suffix=.wav)"
    espeak-ng -v "$2" -s "$3" -w "$spoken" "$4"
    sox "$spoken" "$mixes/talkers/$1.wav" gain -6
    rm -f "$spoken"
}

make_talkers() {
    say "Making three talkers with espeak-ng"
    mkdir -p "$mixes/talkers"
    speak alice en-us+f3 160 "Good morning, this is Alice. Let us go through the plan for the week. On Monday \
we measure the new room, on Tuesday we place the microphones, and by Thursday everybody should be able to join \
from home. If something sounds wrong to you, please say so at once; it is much easier to move a microphone \
than to repair a recording."
    speak bob en-gb 150 "Bob here. I can hear all of you well, only the fan behind me is a little loud. I will \
bring the two loudspeakers from the small hall, and a pair of headphones for everybody who sits at the table. \
Does anybody know whether the carpet has arrived? Without it, the room will ring like a bell."
    speak carol en-gb-scotland+f2 170 "And this is Carol. The carpet came yesterday, it lies in the corridor. I \
would rather start on Wednesday, because the lift is out of order until then, and nobody wants to carry \
loudspeakers up four floors. While you talk I shall write down who does what, and send it round this evening."
}

# A talker beside a loud noise, as the room hears her with noise cancellation off and on.
show_cleaning() {
    local noisy="$mixes/talkers/noisy-alice.wav"
    sox -m -v 1 "$mixes/talkers/alice.wav" -v 0.5 -t sox <(sox "$shipped/Noise.wav" -r 22050 -t sox - repeat 40) \
        "$noisy" trim 0 10
    for state in off on; do
        say "A noisy talker, noise cancellation $state: $mixes/cleaning-$state/"
        "$tool" --output-dir "$mixes/cleaning-$state" --frames 960 --listeners 1 --quiet \
            --set "1:QNL_CONTROL_ANC_ENABLE=$([ "$state" = on ] && echo 1 || echo 0)" "$noisy"
    done
}

hold_demo() {
    make_talkers
    say "Holding the conference: three talkers, nine recordings of alsa-utils, one listener; Noise.wav turned off"
    "$tool" --output-dir "$mixes" --frames 960 --listeners 1 --layout-file examples/conference/layouts.json \
        --set Noise:QNL_CONTROL_MUTE_ENABLE=true --set QNL_CONTROL_ANC_ENABLE=1 --set QNL_CONTROL_AGC_ENABLE=1 \
        "$mixes"/talkers/{alice,bob,carol}.wav "$shipped"/*.wav
    show_cleaning
}

ensure_packages "${build_packages[@]}" espeak-ng sox alsa-utils
build release quenlis_conference
if [ $# -eq 0 ]; then
    hold_demo
else
    say "Holding the conference"
    cd "$caller"
    "$tool" --output-dir "$mixes" "$@"
fi
