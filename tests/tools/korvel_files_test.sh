#!/usr/bin/env bash
# Tests what the korvel command does with image files: info, simulate, and convert between file types. Argument: path of
# the command.
set -euo pipefail

# shellcheck source-path=SCRIPTDIR source=tool_checks.sh
source "$(dirname "$0")/tool_checks.sh"

same_files() { cmp -s "$1" "$2"; }

# The lines of info that tell the channels.
channels_of() {  # channels_of FILE ARGUMENT...
  korvel info "$@" | tail -n +3
}

readonly size=(--size 61x47)

# --- simulate: each format, as bare pixels and in the library's own files

mapfile -t formats < <(korvel formats | awk '/^0x/ {print $2}')
check "there are 49 formats" [ "${#formats[@]}" -eq 49 ]
for format in "${formats[@]}"; do
  succeeds simulate "$format.bin" --format "$format" "${size[@]}"
  succeeds simulate "$format.raw" --format "$format" "${size[@]}"
  succeeds info "$format.raw"
  check "info tells the format $format" grep -qF "$format.raw: RAW, 61 x 47, $format, $(stat -c %s "$format.bin") bytes" out
  check "the RAW file holds the bare pixels of $format" same_files <(tail -c +29 "$format.raw") "$format.bin"
  succeeds convert "$format.raw" back.bin
  check "$format survives a RAW file" same_files back.bin "$format.bin"
done

# One sensor's samples mean the same however they are packed. The last group of pixels is whole, because the layouts 10g40
# and 12g24 end with bits that an image of another size lacks.
readonly whole=(--size 64x46)
for family in Mono BayerGR BayerRG BayerGB BayerBG; do
  for bits in 10 12; do
    korvel simulate unpacked.raw --format $family$bits "${whole[@]}" >out
    expected=$(channels_of unpacked.raw)
    for packed in "${family}${bits}p" "$(printf '%s\n' "${formats[@]}" | grep "^$family${bits}g")"; do
      korvel simulate packed.raw --format "$packed" "${whole[@]}" >out
      check "$packed has the samples of $family$bits" [ "$(channels_of packed.raw)" = "$expected" ]
      korvel convert packed.raw converted.bin --to $family$bits >out
      check "$packed becomes $family$bits" same_files converted.bin <(tail -c +29 unpacked.raw)
    done
  done
done
for order in RGB BGR; do
  check "${order}10p32 has the samples of ${order}10" \
    [ "$(channels_of ${order}10p32.raw)" = "$(channels_of ${order}10.raw)" ]
done
check "RGB12 and BGR12 show one scene" [ "$(channels_of RGB12.raw)" = "$(channels_of BGR12.raw)" ]
check "alpha is opaque" [ "$(channels_of BGRa10.raw | awk '$1 == "alpha" {print $2, $3, $4}')" = "1023 1023 1023.00" ]

succeeds simulate s.bin --format Mono8 "${size[@]}" --frames 3
check "frames are numbered" [ -s s_0001.bin ] && [ -s s_0003.bin ] && [ ! -e s.bin ]
check "each frame has its own noise" [ "$(sha256sum s_000?.bin | cut -d' ' -f1 | sort -u | wc -l)" -eq 3 ]
succeeds simulate s.bin --format Mono8 "${size[@]}" --frames 2 --noise 0
check "without noise all frames are alike" same_files s_0001.bin s_0002.bin
succeeds simulate again.bin --format Mono8 "${size[@]}" --seed 1
check "the seed alone makes the frame" same_files again.bin Mono8.bin
succeeds simulate other.bin --format Mono8 "${size[@]}" --seed 2
check "another seed makes another frame" [ "$(cmp -s other.bin Mono8.bin && echo same)" = "" ]

korvel simulate clean.bin --format Mono12 "${size[@]}" --noise 0 >out
korvel simulate hot.bin --format Mono12 "${size[@]}" --noise 0 --hot-pixels 25 >out
glowing=$({ cmp -l clean.bin hot.bin || true; } | awk '{print int(($1 - 1) / 2)}' | sort -u | wc -l)
check "25 pixels glow" [ "$glowing" -eq 25 ]

fails 2 "--size is required" simulate x.bin --format Mono8
fails 1 "Did you mean BayerRG12p" simulate x.bin --format BayerRG12P "${size[@]}"
fails 1 "more pixels than a simulated sensor" simulate x.bin --format Mono8 --size 100000x100000
fails 1 "--frames: '0' is not a number that can be used here" simulate x.bin --format Mono8 "${size[@]}" --frames 0
fails 1 "Give a number from 0 to 1000" simulate x.bin --format Mono8 "${size[@]}" --noise much
fails 1 "Give a whole number from 0 to 2867" simulate x.bin --format Mono8 "${size[@]}" --hot-pixels 2868
fails 1 "Unsupported pixel format" simulate x.png --format Mono12p "${size[@]}"
fails 1 ".raw and .bin files hold all" simulate x.jpg --format Mono12 "${size[@]}"
# This one would take longer than any test may, were it not refused before the work.
fails 1 "'x.tiff' has an ending that no file type has" simulate x.tiff --format RGB12 --size 16000x16000
fails 1 "cannot open 'missing/x.bin'" simulate missing/x.bin --format Mono8 "${size[@]}"
if [[ -e /dev/full ]]; then
  ln -s /dev/full full.bin
  fails 1 "cannot write 'full.bin': No space left on device" simulate full.bin --format Mono8 "${size[@]}"
fi
check "no failure leaves a frame" [ ! -e x.bin ] && [ ! -e x.png ] && [ ! -e x.jpg ]

# --- info

succeeds info Mono8.raw RGBa12.raw
check "info tells of each file" [ "$(grep -c ': RAW, 61 x 47, ' out)" -eq 2 ]
printf '\001\002\003\004\005\006' >six.bin
succeeds info six.bin --format Mono8 --size 3x2
check "info counts grey" grep -qE '^  grey +1 +6 +3\.50$' out
succeeds info six.bin --format BayerGR8 --size 3x2
check "info counts the red of a mosaic" grep -qE '^  red +2 +2 +2\.00$' out
check "info counts the green of a mosaic" grep -qE '^  green +1 +5 +3\.00$' out
check "info counts the blue of a mosaic" grep -qE '^  blue +4 +6 +5\.00$' out
succeeds info six.bin --format BGR8 --size 2x1
check "info counts colours by their names" grep -qE '^  red +3 +6 +4\.50$' out
succeeds info six.bin --format RGB8 --size 2x1 --json
check "info --json tells the format" grep -qF '"format": "RGB8"' out
if command -v python3 >/dev/null; then
  check "info --json is JSON" python3 -c '
import json
file, = json.load(open("out"))
assert (file["width"], file["height"], file["byteCount"]) == (2, 1, 6)
assert file["channels"][0] == {"name": "red", "samples": 2, "minimum": 1, "maximum": 4, "mean": 2.5}'
fi

fails 2 "'six.bin' holds bare pixels, for which --format is required" info six.bin
fails 1 "'video.avi' is a video, and only pictures are read" convert video.avi x.png
fails 1 "ffmpeg -i video.avi frame%04d.png" view video.avi
fails 2 "--skip belongs to bare pixels, for which --size is required" info Mono8.raw --skip 4
fails 1 "cannot read 'missing.png': error: type=Io[3]" info missing.png
fails 1 "(return code 3)" info missing.png
cp six.bin six.png
fails 1 "cannot read 'six.png'" info six.png
run info six.png Mono8.raw missing.raw
check "info goes on after a file that can't be read" grep -qF 'Mono8.raw: RAW' out
check "info fails if a file can't be read" [ "$code" -eq 1 ]
check "info tells how many files failed" grep -qF '2 of 3 files failed' err

# --- convert between file types

for format in Mono8 BayerGB8 Mono10 BayerBG12 BGR8 RGBa8 BGRa8 BGR10p32; do
  run convert "$format.raw" "$format.bmp"
  check "$format goes into a BMP file" grep -qF "wrote $format.bmp: 61 x 47, $format" out
  succeeds convert "$format.bmp" back.bin
  check "$format survives a BMP file" same_files back.bin "$format.bin"
done
# In these files blue comes first, whatever the image had.
for format in RGB8 RGB10p32; do
  succeeds convert $format.raw $format.bmp
  check "a BMP file keeps the colours of $format" [ "$(channels_of $format.bmp)" = "$(channels_of $format.raw)" ]
done
succeeds convert RGB8.bmp back.png --to RGB8
succeeds convert RGB8.raw expected.png
check "a BMP file becomes a PNG file in its colours" same_files back.png expected.png

for format in Mono8 Mono10 Mono12 RGB8 RGB10 RGB12 RGBa8 RGBa10 RGBa12; do
  succeeds convert "$format.raw" "$format.png"
  succeeds convert "$format.png" back.bin
  check "$format survives a PNG file" same_files back.bin "$format.bin"
done
succeeds convert RGB8.raw small.png --quality 10
check "--quality 10 makes a PNG file smaller" [ "$(stat -c %s small.png)" -lt "$(stat -c %s RGB8.png)" ]
succeeds convert small.png back.bin
check "--quality keeps a PNG file's pixels" same_files back.bin RGB8.bin

succeeds convert RGB8.raw best.jpg --quality 100
succeeds convert RGB8.raw least.JPEG --quality 0
check "--quality sets the size of a JPEG file" [ "$(stat -c %s least.JPEG)" -lt "$(stat -c %s best.jpg)" ]
succeeds info best.jpg
check "a JPEG file is read" grep -qF 'best.jpg: JPEG, 61 x 47, RGB8' out
fails 1 "Give a whole number from 0 to 100" convert RGB8.raw x.jpg --quality 101

succeeds convert Mono12.raw mono.jpg
check "mono becomes 8 bits where the type needs it" grep -qF 'wrote mono.jpg: 61 x 47, Mono8' out
succeeds convert BayerRG12.raw colour.jpg
check "a mosaic becomes a colour picture where the type needs it" grep -qF 'wrote colour.jpg: 61 x 47, BGRa8' out
succeeds convert RGBa12.raw colour.bmp
check "colour becomes 8 bits where the type needs it" grep -qF 'wrote colour.bmp: 61 x 47, RGBa8' out
run convert BayerRG8.raw mosaic.png
check "a mosaic stays where the type takes it" grep -qF 'wrote mosaic.png: 61 x 47, BayerRG8' out
check "a bare mosaic gets a note" grep -qF -- '--to BGRa8 makes colours' err
succeeds convert mosaic.png taken.raw --format BayerRG8
check "a grey file is taken for a mosaic" same_files taken.raw BayerRG8.raw
fails 1 "Grey files can be taken for Bayer formats" convert mosaic.png x.raw --format BayerRG12
fails 1 "return code 8" convert mosaic.png x.raw --format BayerRG12

# --- many files

succeeds convert Mono8.raw RGB12.raw BGRa8.raw -o new/folder --as bin
check "a folder of files is written" same_files new/folder/RGB12.bin RGB12.bin
check "each file is told" [ "$(grep -c '^wrote new/folder/' out)" -eq 3 ]
succeeds convert Mono8.raw -o pictures
check "without --as the pictures are PNG files" is_png pictures/Mono8.png 61 47 8 "$grey"
fails 1 "would both become 'pictures/Mono8.png'" convert Mono8.raw Mono8.bmp -o pictures
fails 1 "--as: there is no file type 'gif'" convert Mono8.raw -o pictures --as gif
fails 1 "cannot make the folder 'six.bin/x'" convert Mono8.raw -o six.bin/x
run convert Mono8.raw missing.raw RGB8.raw -o some
check "the other files are converted after a failure" [ -s some/Mono8.png ] && [ -s some/RGB8.png ]
check "a failure among many is told" grep -qF "cannot read 'missing.raw'" err
check "a failure among many is one" [ "$code" -eq 1 ]
check "what isn't a terminal sees no progress bar" [ "$(grep -c 'converting' err)" -eq 0 ]
if command -v script >/dev/null; then
  script -qec 'korvel convert Mono8.raw RGB8.raw -o terminal' /dev/null >out </dev/null
  check "a terminal sees a progress bar" grep -qF 'converting [####################....................] 1 of 2' out
  check "a terminal sees how many files were written" grep -qF 'wrote 2 files to terminal' out
fi

ends_well
