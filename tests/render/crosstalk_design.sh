#!/usr/bin/env bash
# crosstalk_design.sh <tool> <project source>
# The tool gives the same bytes as those in the tree, and the documents show what it prints and draws.
set -euo pipefail
tool="$1"
source="$2"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT

"$tool" "$work/tables" --plot "$work/plot.svg" >"$work/report"
diff -r "$work/tables" "$source/data/crosstalk"
diff "$work/plot.svg" "$source/docs/crosstalk_separation.svg"
[[ "$(<"$source/data/README.md")" == *"$(<"$work/report")"* ]] || {
    echo "data/README.md does not hold this report:"
    cat "$work/report"
    exit 1
}

# A folder that cannot be made is a complaint and a failure.
if "$tool" /dev/null/folder >"$work/report" 2>&1; then
    exit 1
fi
grep -q '^crosstalk_design: ' "$work/report"
