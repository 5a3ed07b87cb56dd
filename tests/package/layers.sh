#!/usr/bin/env bash
# layers.sh <project source>
# A file of src/ includes what stands in its own layer or below, without cycles among headers; the layers of
# signals know nothing of rooms, JSON or logging; instruction sets are spoken of in src/dsp/ only.
set -euo pipefail
cd "$1/src"
status=0
complain() {
    echo "$*"
    status=1
}

# The number of a file's layer: 0 knows nothing of conferences, 7 is the door.
layer_of() {
    case "$1" in
    quenlis.h | dsp/* | frame/logger.* | frame/exception.* | frame/common_object.* | frame/shared_lock.* | \
        frame/integers.*) echo 0 ;;
    conference/flags.* | conference/geometry.* | conference/control_text.*) echo 1 ;;
    mix/* | voice/* | render/*) echo 2 ;;
    conference/participant*) echo 3 ;;
    conference/*) echo 4 ;;
    remote/*) echo 5 ;;
    frame/exported_functions.*) echo 7 ;;
    frame/*) echo 6 ;;
    *) echo "no layer is known for $1" >&2 && exit 1 ;;
    esac
}

# May a file of this folder name that header at all?
knows() {
    case "$1 $2" in
    dsp/*\ dsp/*) ;;
    dsp/*) return 1 ;;
    voice/*\ voice/* | voice/*\ dsp/*) ;;
    voice/*) return 1 ;;
    remote/*\ remote/* | remote/*\ quenlis.h | remote/*\ frame/logger.h | remote/*\ frame/exception.h) ;;
    remote/*) return 1 ;;
    esac
}

includes="$(grep -rHoE '^ *# *include +"[^"]+"' --include='*.h' --include='*.cpp' . |
    sed -E 's,^\./([^:]+):.*"([^"]+)"$,\1 \2,')"
while read -r file included; do
    [ "$(layer_of "$included")" -le "$(layer_of "$file")" ] || complain "$file includes $included of a higher layer"
    knows "$file" "$included" || complain "$file must not know $included"
done <<<"$includes"
grep -E '^[^ ]+\.h ' <<<"$includes" | tsort >/dev/null || complain "headers include each other in a circle"

json_in_signals="$(find dsp voice render -type f -exec grep -l '<nlohmann/' {} + 2>/dev/null || true)"
[ -z "$json_in_signals" ] || complain "JSON in $json_in_signals"

instruction_sets='immintrin|[xe]mmintrin|arm_neon|\b_mm(256|512)?_|\b__m(128|256|512)|<hwy/|\bHWY_|\b(sse[0-9._]*|avx[0-9_]*|neon)\b'
spoken_of="$(grep -rniE "$instruction_sets" .. --include='*.h' --include='*.c' --include='*.cpp' |
    grep -vE '^\.\./(build[^/]*|out|src/dsp|tests/dsp|bench)/' || true)"
[ -z "$spoken_of" ] || complain "instruction sets outside src/dsp/:"$'\n'"$spoken_of"
exit "$status"
