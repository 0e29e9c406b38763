#!/usr/bin/env bash
# Plays a show on a virtual display: presses the start button, keeps screenshots.
#
#     play-virtual.sh PLAYER FOLDER-OF-THE-SHOW FOLDER-FOR-SCREENSHOTS
#
# Ends with the player's own output and status.
set -u
player=$(realpath "$1")
show=$2
shots=$3
mkdir -p "$shots"
shots=$(cd "$shots" && pwd)
rm -f "$shots"/*.png

scratch=$(mktemp -d)
server=
running=
cleanup() {
    [ -z "$running" ] || kill "$running" 2>/dev/null
    [ -z "$server" ] || kill "$server" 2>/dev/null
    wait 2>/dev/null
    rm -rf "$scratch"
}
trap cleanup EXIT
trap 'exit 130' INT TERM

mkfifo "$scratch/number"
Xvfb -displayfd 3 -screen 0 640x480x24 -nolisten tcp 3>"$scratch/number" >/dev/null 2>&1 &
server=$!
read -r -t 20 number <"$scratch/number" || { echo "Sorry: the virtual display did not start." >&2; exit 1; }
export DISPLAY=:$number

shot() { import -window root "$shots/$1.png" 2>/dev/null; }

(cd "$show" && exec "$player") >"$scratch/output" 2>&1 &
running=$!
window=$(timeout 20 xdotool search --sync --onlyvisible --name '^Brimlow Engine' 2>/dev/null | head -n 1)
if [ -n "$window" ]; then
    sleep 0.3
    shot dialog
    xdotool mousemove --window "$window" 318 217 mousedown 1
    sleep 0.2
    xdotool mouseup 1
    for second in $(seq 1 600); do
        sleep 1
        kill -0 "$running" 2>/dev/null || break
        [ "$second" -lt 3 ] || [ $((second % 8)) = 3 ] && shot "$(printf 'second-%03d' "$second")"
    done
fi
wait "$running"
status=$?
running=
echo "== screenshots: $shots"
ls "$shots" | sed 's/^/   /'
cat "$scratch/output"
exit $status
