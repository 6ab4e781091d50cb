#!/usr/bin/env bash
# Tests the commands of korvel that change images: correct, bin, mirror and rotate. Argument: path of the command.
set -euo pipefail

# shellcheck source-path=SCRIPTDIR source=tool_checks.sh
source "$(dirname "$0")/tool_checks.sh"

printf '\001\002\003\004\005\006' >six.bin
readonly six=(--format Mono8 --size 3x2)

# --- mirror and rotate

succeeds mirror six.bin out.bin "${six[@]}" --left-right
check "left and right are exchanged" is_bytes out.bin 3 2 1 6 5 4
succeeds mirror six.bin out.bin "${six[@]}" --up-down
check "up and down are exchanged" is_bytes out.bin 4 5 6 1 2 3
succeeds mirror six.bin out.bin "${six[@]}" --up-down --left-right
check "both are exchanged" is_bytes out.bin 6 5 4 3 2 1
succeeds mirror six.bin out.bin --format BayerRG8 --size 2x3 --left-right
check "a mosaic becomes the one that fits" grep -qF 'wrote out.bin: 2 x 3, BayerGR8' out

succeeds rotate six.bin out.bin "${six[@]}" --angle 90
check "90 degrees are counter-clockwise" is_bytes out.bin 3 6 2 5 1 4
check "a quarter turn exchanges width and height" grep -qF 'wrote out.bin: 2 x 3, Mono8' out
succeeds rotate six.bin out.bin "${six[@]}" --angle 180
check "180 degrees turn everything round" is_bytes out.bin 6 5 4 3 2 1
succeeds rotate six.bin out.bin "${six[@]}" --angle 270
check "270 degrees are a quarter turn clockwise" is_bytes out.bin 4 1 5 2 6 3

korvel simulate packed.raw --format Mono12p --size 64x48 >out
succeeds mirror packed.raw mirrored.raw --left-right
check "a packed image is unpacked first" grep -qF 'wrote mirrored.raw: 64 x 48, Mono12' out
succeeds mirror mirrored.raw back.bin --left-right
korvel convert packed.raw unpacked.bin --to Mono12 >out
check "mirroring twice changes nothing" cmp -s back.bin unpacked.bin

fails 2 "--left-right or --up-down, or both, is required" mirror six.bin x.bin "${six[@]}"
fails 1 "The angles are 90, 180 and 270." rotate six.bin x.bin "${six[@]}" --angle 45
fails 1 "is the input itself" rotate six.bin six.bin "${six[@]}" --angle 90
fails 2 "'six.bin' holds bare pixels, for which --format is required" rotate six.bin x.bin --angle 90

# --- bin

for value in {0..31}; do printf '%b' "\\0$(printf %o "$value")"; done >ramp.bin
readonly ramp=(--format Mono8 --size 8x4)
succeeds bin ramp.bin out.bin "${ramp[@]}" --block 2x2
check "blocks become their mean" is_bytes out.bin 4 6 8 10 20 22 24 26
succeeds bin ramp.bin out.bin "${ramp[@]}" --block 2
check "one number is that of both sides" is_bytes out.bin 4 6 8 10 20 22 24 26
succeeds bin ramp.bin out.bin "${ramp[@]}" --block 2x2 --sum
check "blocks become their sum" is_bytes out.bin 18 26 34 42 82 90 98 106
succeeds bin ramp.bin out.bin "${ramp[@]}" --block 1x2
check "a block may be one pixel wide" is_bytes out.bin 4 5 6 7 8 9 10 11 20 21 22 23 24 25 26 27
for block in 9x1 0x2 2x 2x2x2 two; do
  fails 1 "is not a size of blocks" bin ramp.bin x.bin "${ramp[@]}" --block="$block"
done
fails 1 "Choose smaller blocks" bin ramp.bin x.bin "${ramp[@]}" --block 4x4

# --- correct

succeeds correct six.bin out.bin "${six[@]}" --gain 2
check "gain multiplies" is_bytes out.bin 2 4 6 8 10 12
succeeds correct six.bin out.bin --format BayerRG8 --size 3x2 --gain 2,3,1,4
check "each colour has its gain" is_bytes out.bin 6 4 18 8 40 12
printf '\000\100\377' >three.bin
succeeds correct three.bin out.bin --format Mono8 --size 3x1 --gamma 2
check "gamma lightens" is_bytes out.bin 0 127 255
succeeds correct three.bin out.bin --format Mono8 --size 3x1 --gamma 2 --gain 2
check "gain comes before gamma" is_bytes out.bin 0 180 255
printf '\012\024\036' >pixel.bin
readonly pixel=(--format RGB8 --size 1x1)
succeeds correct pixel.bin out.bin "${pixel[@]}" --matrix "0 0 1 1 0 0 0 1 0"
check "a matrix mixes colours" is_bytes out.bin 30 10 20
printf '0, 0, 1\n1, 0, 0\n0, 1, 0\n' >matrix.txt
succeeds correct pixel.bin out.bin "${pixel[@]}" --matrix matrix.txt
check "a matrix comes from a file" is_bytes out.bin 30 10 20
succeeds correct pixel.bin out.bin "${pixel[@]}" --matrix="-1 0 0 0 2 0 0 0 1"
check "a matrix may begin with a sign" is_bytes out.bin 0 40 30
succeeds correct six.bin out.raw "${six[@]}" --matrix "1 0 0 0 1 0 0 0 1"
check "for a matrix mono becomes colour" grep -qF 'wrote out.raw: 3 x 2, BGRa8' out

korvel simulate dull.raw --format Mono10 --size 64x48 --noise 0 >out
korvel simulate hot.raw --format Mono10 --size 64x48 --noise 0 --hot-pixels 3 --seed 3 >out
succeeds hot-pixels hot.raw --level 1
before=$(sed -n 's/ hot pixels\{0,1\} at level 1//p' out)
succeeds correct hot.raw mended.raw --hot-pixels 1
succeeds hot-pixels mended.raw --level 1
after=$(sed -n 's/ hot pixels\{0,1\} at level 1//p' out)
check "hot pixels are replaced" [ "$after" -lt "$before" ]

fails 2 "One at least of --hot-pixels, --gain, --matrix and --gamma is required" correct six.bin x.bin "${six[@]}"
fails 1 "is neither one gain nor four" correct six.bin x.bin "${six[@]}" --gain 1,2
fails 1 "is neither one gain nor four" correct six.bin x.bin "${six[@]}" --gain much
fails 1 "cannot set the gain: error: type=" correct six.bin x.bin "${six[@]}" --gain 9
fails 1 "Each gain is from 1 to 8" correct six.bin x.bin "${six[@]}" --gain 1,1,1,0.5
fails 1 "(return code 5)" correct six.bin x.bin "${six[@]}" --gain 0.5
fails 1 "Gain is for mono and Bayer images" correct pixel.bin x.bin "${pixel[@]}" --gain 2
fails 1 "Hot pixels are those of a sensor" correct pixel.bin x.bin "${pixel[@]}" --hot-pixels 3
fails 1 "Give a whole number from 1 to 5" correct six.bin x.bin "${six[@]}" --hot-pixels 6
fails 1 "has not nine numbers" correct pixel.bin x.bin "${pixel[@]}" --matrix "1 2 3"
fails 1 "neither a list of numbers nor a file" correct pixel.bin x.bin "${pixel[@]}" --matrix missing.txt
fails 1 "has not nine numbers" correct pixel.bin x.bin "${pixel[@]}" --matrix six.bin
fails 1 "Give a number from 0.3 to 3" correct six.bin x.bin "${six[@]}" --gamma 0
check "no failure leaves a file" [ ! -e x.bin ]

ends_well
