#!/usr/bin/env bash
# Draws the pictures of the README and the docs anew, from the bundled show.
#
#     scripts/draw-pictures.sh        (after: ninja -C build/native; needs imagemagick and python3-pil)
set -eu
cd "$(dirname "$0")/.."
render=$PWD/build/native/brimlow-render
show=$PWD/build/native/productions/first-light/demo.dpk
images=$PWD/docs/images
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
mkdir -p "$images"

moments=4,9,19,30,36,44,51,58,62,72,80,86 # seconds: at least one of every scene
python=/usr/bin/python3

$python src/engine/shell/artwork/draw.py --preview "$images/dialog.png"
"$render" -y --size 640x400 --aspect 16:10 --loading 70 -o "$images/loading.png" "$show"
"$render" -y --size 1280x640 --fps 10 --samples 4 --at 19 -o "$images/first-light.png" "$show"
sed -n '/^```lua$/,/^```$/ { /^```/! p }' README.md >"$scratch/show.lua"
build/native/brimlow-make build "$scratch" >/dev/null
"$render" -y --size 640x320 --samples 4 --at 1 -o "$images/rings.png" "$scratch/demo.dpk"
"$render" -y --size 480x300 --fps 10 --samples 4 --at "$moments" --contact-sheet "$images/contact-sheet.png" "$show"
for path in glsl fixed; do
    "$render" --size 400x250 --fps 10 --path "$path" --at 19,30,36,44,51,59,72,80 -o "$scratch/$path-%05d.png" "$show"
done
set --
for still in "$scratch"/glsl-*.png; do
    set -- "$@" "$still" "${still/glsl-/fixed-}"
done
montage "$@" -tile 4x -geometry 400x250+3+3 -background '#10131f' "$images/both-paths.png"
for picture in "$images"/{both-paths,contact-sheet,first-light,rings}.png; do
    convert "$picture" -strip -define png:compression-level=9 "$picture"
done
$python scripts/draw-preview.py build/native/brimlow-preview "$images"
ls -l "$images"
