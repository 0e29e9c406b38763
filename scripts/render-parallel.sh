#!/usr/bin/env bash
# Renders a production in segments, several at a time, with GNU parallel:
#
#     render-parallel.sh [-j SLOTS] [-n SEGMENTS] OUTPUT PACK [OPTION ...]
#
# OUTPUT is frames/%05d.png or show.mkv; options are those of brimlow-render, but for -o, --from and --to. SLOTS run at
# a time (one a processor unless given), of twice as many SEGMENTS. What is there is replaced. When a segment fails no
# other is begun, and the status is not 0. BRIMLOW_RENDER names the program where it is not in PATH.
set -euo pipefail
fail() { echo "Error: $*." >&2; exit 2; }

here=$(cd "$(dirname "$0")" && pwd)
slots=$(nproc)
segments=
while getopts :j:n: option; do
    case $option in
    j) slots=$OPTARG ;;
    n) segments=$OPTARG ;;
    *) fail "render-parallel.sh takes [-j SLOTS] [-n SEGMENTS] OUTPUT PACK [OPTION ...]" ;;
    esac
done
shift $((OPTIND - 1))
[ $# -ge 2 ] || fail "render-parallel.sh takes [-j SLOTS] [-n SEGMENTS] OUTPUT PACK [OPTION ...]"
[[ $slots =~ ^[1-9][0-9]{0,3}$ ]] || fail "-j takes a number from 1 to 9999, not \"$slots\""
segments=${segments:-$((2 * slots))}
[[ $segments =~ ^[1-9][0-9]{0,4}$ ]] || fail "-n takes a number from 1 to 99999, not \"$segments\""
command -v parallel >/dev/null || fail "GNU parallel is not installed (Debian: parallel)"

# Software rasterisers would each take every processor.
export LP_NUM_THREADS=${LP_NUM_THREADS:-$((($(nproc) + slots - 1) / slots))}
seq 0 $((segments - 1)) | parallel --no-notice --quote --env LP_NUM_THREADS --env BRIMLOW_RENDER --jobs "$slots" \
    --halt soon,fail=1 --tag --line-buffer \
    "$here/render-segment.sh" {} "$segments" "$@"
"$here/render-join.sh" "$segments" "$1"
