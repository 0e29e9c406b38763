#!/usr/bin/env bash
# Renders a production in segments on a Slurm cluster, and joins them:
#
#     render-slurm.sh [-c CPUS] [-n SEGMENTS] OUTPUT PACK [OPTION ...]
#
# OUTPUT is frames/%05d.png or show.mkv, in a folder that all nodes see under the same name, as they see the PACK;
# options are those of brimlow-render, but for -o, --from and --to. Each of the SEGMENTS (8 unless given) is a job of an
# array and has CPUS processors (4); what they say is in OUTPUT.SEGMENT.log. A last job joins them. Returns when it is
# done; the status is not 0 when anything failed. What is there is replaced. SBATCH_... variables choose
# partitions and the like; BRIMLOW_RENDER names the program where the nodes do not have it in PATH.
set -euo pipefail
fail() { echo "Error: $*." >&2; exit 2; }

here=$(cd "$(dirname "$0")" && pwd)
cpus=4
segments=8
while getopts :c:n: option; do
    case $option in
    c) cpus=$OPTARG ;;
    n) segments=$OPTARG ;;
    *) fail "render-slurm.sh takes [-c CPUS] [-n SEGMENTS] OUTPUT PACK [OPTION ...]" ;;
    esac
done
shift $((OPTIND - 1))
[ $# -ge 2 ] || fail "render-slurm.sh takes [-c CPUS] [-n SEGMENTS] OUTPUT PACK [OPTION ...]"
[[ $cpus =~ ^[1-9][0-9]{0,3}$ ]] || fail "-c takes a number from 1 to 9999, not \"$cpus\""
[[ $segments =~ ^[1-9][0-9]{0,4}$ ]] || fail "-n takes a number from 1 to 99999, not \"$segments\""
command -v sbatch >/dev/null || fail "Slurm is not installed (Debian: slurm-client)"

output=$1
mkdir -p -- "$(dirname "$output")"
logs=${output//%/%%} # a per cent sign is Slurm's own
export LP_NUM_THREADS=${LP_NUM_THREADS:-$cpus}
run() { # NAME LOG COMMAND-LINE [OPTION ...]; waits for the job, and has its status: of an array the greatest
    local name=$1 log=$2 command=$3
    shift 3
    sbatch --wait --job-name="$name" --output="$logs.$log.log" "$@" --wrap "exec $command"
}
run brimlow-render %a "$(printf '%q ' "$here/render-segment.sh") \$SLURM_ARRAY_TASK_ID $(printf '%q ' "$segments" "$@")" \
    --array="0-$((segments - 1))" --cpus-per-task="$cpus" || fail "a segment was not rendered: see $output.*.log"
run brimlow-join join "$(printf '%q ' "$here/render-join.sh" "$segments" "$output")" \
    || fail "the segments were not joined: see $output.join.log"
echo "Rendered $output in $segments segments."
