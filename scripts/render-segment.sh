#!/usr/bin/env bash
# Renders segment NUMBER (from 0) of COUNT equal ones: pictures by a pattern, or a part of an .mkv.
#
#     render-segment.sh NUMBER COUNT OUTPUT PACK [OPTION ...]
#
# OUTPUT is frames/%05d.png, to which each segment adds its own, or show.mkv, of which the part is put into
# show.mkv.parts. A segment that is there is made again. Options are those of brimlow-render, but for -o, --from and
# --to; BRIMLOW_RENDER names the program where it is not in PATH.
set -euo pipefail
fail() { echo "Error: $*." >&2; exit 2; }

[ $# -ge 4 ] || fail "render-segment.sh takes NUMBER COUNT OUTPUT PACK [OPTION ...]"
number=$1 count=$2 output=$3 pack=$4
shift 4
[[ $count =~ ^[1-9][0-9]{0,4}$ ]] || fail "the count of segments is a number from 1 to 99999, not \"$count\""
if ! [[ $number =~ ^(0|[1-9][0-9]{0,4})$ ]] || ((number >= count)); then
    fail "a segment is a number from 0 to $((count - 1)), not \"$number\""
fi

# Both sides of a seam name it by the same text.
share() { printf '%d.%03d%%' $(($1 * 100000 / count / 1000)) $(($1 * 100000 / count % 1000)); }

case $output in
*%*.png) to=$output ;;
*.mkv) to=$output.parts/part-$(printf '%05d' "$number").mkv ;;
*) fail "segments go to pictures like frames/%05d.png or to an .mkv, not to \"$output\"" ;;
esac
exec "${BRIMLOW_RENDER:-brimlow-render}" -y "$@" -o "$to" --from "$(share "$number")" --to "$(share $((number + 1)))" \
    -- "$pack"
