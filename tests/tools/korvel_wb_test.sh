#!/usr/bin/env bash
# Tests korvel wb. Argument: path of the command.
set -euo pipefail

# shellcheck source-path=SCRIPTDIR source=tool_checks.sh
source "$(dirname "$0")/tool_checks.sh"

mosaic() {  # mosaic FIRST SECOND THIRD FOURTH: 8 x 8 pixels of equal cells, each value three octal digits
  local row
  for row in 0 1 2 3; do
    printf "\\$1\\$2%.0s" 1 2 3 4
    printf "\\$3\\$4%.0s" 1 2 3 4
  done
}

are_grey() {  # that red, green and blue have the same mean within 1 in 100, in the patch of the last run of info
  awk '$1 ~ /^(red|green|blue)$/ {
    if ($4 > most) most = $4
    if (least == "" || $4 < least) least = $4
  } END {exit !(most > 0 && most - least <= most / 100)}' out
}

# --- by hand

mosaic 144 310 310 240 >cast.bin  # red 100, green 200, blue 160
readonly cast=(--format BayerRG8 --size 8x8)
succeeds wb cast.bin "${cast[@]}" --grey-world
check "gains lift all to the brightest" grep -qxF 'red 2.000, green 1.000, blue 1.250 from 16 cells of 2 x 2 pixels' out
check "the command to run is printed" grep -qxF \
  'korvel correct cast.bin balanced.png --to BGRa8 --format BayerRG8 --size 8x8 --gain 1,2.000,1.000,1.250' out
succeeds wb cast.bin --format BayerGB8 --size 8x8 --patch 1,3,5,2
check "a patch may begin anywhere" grep -qxF 'red 1.000, green 1.538, blue 1.000 from 2 cells of 2 x 2 pixels' out
{
  printf '\377'
  tail -c +2 cast.bin
} >clipped.bin
succeeds wb clipped.bin "${cast[@]}" --grey-world
check "what is clipped doesn't count" \
  grep -qxF 'red 2.000, green 1.000, blue 1.250 from 15 cells of 2 x 2 pixels; 1 clipped ones are left out' out
succeeds wb cast.bin "${cast[@]}" --grey-world --json
if command -v python3 >/dev/null; then
  check "wb --json is JSON" python3 -c '
import json
report = json.load(open("out"))
assert (report["red"], report["green"], report["blue"]) == (2, 1, 1.25)
assert report["gain"] == "1,2.000,1.000,1.250" and report["cells"] == 16'
fi

# --- a camera's frame under coloured light

for format in BayerRG12p BayerGR10 BayerGB12g24Qrv BayerBG8; do
  # The third grey patch of the chart, with room for the demosaic around what is looked at.
  korvel simulate neutral.raw --format $format --size 640x480 >out
  korvel correct neutral.raw 'the cast.raw' --gain 1,1,1.4,1.2 >out
  succeeds wb 'the cast.raw' --patch 126,226,30,30
  tail -n 1 out >command.sh
  bash command.sh >out
  check "$format: the command that is printed works" grep -qF 'wrote balanced.png: 640 x 480, BGRa8' out
  korvel convert balanced.png balanced.bin >out
  for ((row = 230; row < 250; ++row)); do
    tail -c +$((4 * (640 * row + 131) + 1)) balanced.bin | head -c $((4 * 20)) || true
  done >patch.bin
  korvel info patch.bin --format BGRa8 --size 20x20 >out
  check "$format: the patch becomes grey" are_grey
done

# --- when something is wrong

mosaic 377 310 310 240 >bright.bin
mosaic 000 310 310 240 >black.bin
fails 1 "which tells no colours" wb bright.bin "${cast[@]}" --grey-world
fails 1 "one colour is more than 8 times as bright" wb black.bin "${cast[@]}" --grey-world
fails 1 "and gains of colours are for Bayer images" wb cast.bin --format Mono8 --size 8x8 --grey-world
fails 1 "the image has no cell of 2 x 2 pixels" wb cast.bin --format BayerRG8 --size 64x1 --grey-world
for patch in 0,0,9,8 7,0,2,2 0,0,1,8 0,0,8 0,0,8,8,8 '0,0,8,8,' a,0,8,8 -1,0,8,8 0,,8,8 4000000000,0,2,2; do
  fails 1 "is not a part of the 8 x 8 pixels" wb cast.bin "${cast[@]}" --patch=$patch
done
cp cast.bin ./-cast.bin
succeeds wb "${cast[@]}" --grey-world -- -cast.bin
check "a name that looks like an option becomes none" grep -qF "korvel correct ./-cast.bin balanced.png" out
fails 2 "Either --patch or --grey-world is required" wb cast.bin "${cast[@]}"
fails 2 "Either --patch or --grey-world is required" wb cast.bin "${cast[@]}" --grey-world --patch 0,0,8,8
fails 2 "--format is required" wb cast.bin --size 8x8 --grey-world

ends_well
