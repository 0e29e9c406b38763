#!/usr/bin/env bash
# Joins the parts of an .mkv that render-segment.sh has made, without encoding them again:
#
#     render-join.sh COUNT OUTPUT
#
# Every part must be there. The joined file takes its place when it is whole, and the parts go. Pictures need no
# joining: of another OUTPUT nothing is done.
set -euo pipefail
fail() { echo "Error: $*." >&2; exit 2; }

[ $# = 2 ] || fail "render-join.sh takes COUNT OUTPUT"
count=$1 output=$2
[[ $count =~ ^[1-9][0-9]{0,4}$ ]] || fail "the count of segments is a number from 1 to 99999, not \"$count\""
[[ $output == *.mkv ]] || exit 0
[ -d "$output.parts" ] || fail "$output has no parts: the folder $output.parts is missing"

for ((number = 0; number < count; ++number)); do
    part=$(printf 'part-%05d.mkv' "$number")
    [ -f "$output.parts/$part" ] || fail "$output.parts/$part is missing: render segment $number again"
    echo "file '$part'"
done >"$output.parts/list.txt"
ffmpeg -hide_banner -loglevel error -xerror -nostdin -y -f concat -safe 0 -i "$output.parts/list.txt" -map 0 -c copy \
    -fflags +bitexact -map_metadata -1 -f matroska "file:$output.parts/joined" || fail "the parts of $output cannot be joined"
mv -f -- "$output.parts/joined" "$output"
rm -r -- "$output.parts"
