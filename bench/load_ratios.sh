#!/usr/bin/env bash
# Whole-process load measurements against the floor, as ratios in one run:
#   tovi info, tovi info --json, and bench_load --floor (pugixml on the same PHOTO.XML in
#   UTF-8, and with the Shift_JIS conversion). Each runs three times; the best time and its
#   peak resident memory are kept.
#
#   bench/load_ratios.sh [DELIVERY_PHOTO_FOLDER]
# Without a folder, a 100,000-photograph 国交省-20 delivery is written to a temporary folder
# and removed afterwards. Needs a built tree (scripts/setup.sh).
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
bin="$root/build/bin"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT

folder="${1:-}"
if [[ -z "$folder" ]]; then
    "$bin/tovi-makedelivery" "$work/d" --count 100000 --images none >/dev/null
    folder="$work/d/INDEX_C/PHOTO"
fi
iconv -f CP932 -t UTF-8 "$folder/PHOTO.XML" |
    sed '1s/encoding="Shift_JIS"/encoding="UTF-8"/' >"$work/utf8.xml"

# best of three: "seconds peak_kB"
measure() {
    local best=""
    for _ in 1 2 3; do
        /usr/bin/time -f "%e %M" -o "$work/t" "$@" >/dev/null
        local now
        now="$(cat "$work/t")"
        if [[ -z "$best" ]] || awk -v a="${now% *}" -v b="${best% *}" 'BEGIN{exit !(a<b)}'; then
            best="$now"
        fi
    done
    echo "$best"
}

floor="$(measure "$bin/bench_load" --floor "$work/utf8.xml")"
floorSjis="$(measure "$bin/bench_load" --floor "$folder/PHOTO.XML" --convert)"
info="$(measure "$bin/tovi" --profile "$work/p.ini" info "$folder")"
json="$(measure "$bin/tovi" --profile "$work/p.ini" info --json "$folder")"

awk -v f="$floor" -v fs="$floorSjis" -v i="$info" -v j="$json" 'BEGIN {
    split(f, F, " "); split(fs, S, " "); split(i, I, " "); split(j, J, " ");
    printf "%-28s %8s %10s %10s %10s\n", "", "seconds", "peak MB", "time/floor", "peak/floor";
    row("floor (pugixml, UTF-8)", F); row("floor + Shift_JIS", S);
    row("tovi info", I); row("tovi info --json", J);
    printf "json peak / info peak: %.2f\n", J[2] / I[2];
}
function row(name, R) {
    printf "%-28s %8.2f %10.0f %10.2f %10.2f\n", name, R[1], R[2] / 1024, R[1] / F[1], R[2] / F[2];
}'
