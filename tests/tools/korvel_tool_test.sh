#!/usr/bin/env bash
# Tests the korvel command by its output, files and exit codes. Argument: path of the command.
set -euo pipefail

# shellcheck source-path=SCRIPTDIR source=tool_checks.sh
source "$(dirname "$0")/tool_checks.sh"

# --- formats

succeeds formats
check "formats lists 49 formats" [ "$(grep -c '^0x' out)" -eq 49 ]
check "formats tells the properties of BayerRG12p" \
  grep -qE '^0x010C0059 +BayerRG12p +1 +12 +12 +12 +12 +4095$' out
check "formats tells the properties of BGRa8" grep -qE '^0x02200017 +BGRa8 +4 +8 +32 +8 +32 +255$' out
check "formats lists the library's own formats" grep -qE '^0x4000001F +Mono12g24Qrv ' out

succeeds formats --json
check "formats --json lists 49 formats" [ "$(grep -c '"name": "' out)" -eq 49 ]
check "formats --json tells ids as numbers" grep -qE '"id": 17301505,$' out
if command -v python3 >/dev/null; then
  check "formats --json is JSON" python3 -c 'import json; assert len(json.load(open("out"))) == 49'
fi

for arguments in formats --help --version "view --help"; do
  checks=$((checks + 1))
  # shellcheck disable=SC2086  # words of their own
  if [[ -e /dev/full ]] && korvel $arguments >/dev/full 2>err; then
    failures=$((failures + 1))
    echo "FAILED: korvel $arguments notices that nothing can be written"
  fi
done

# --- convert, as it is meant

samples $((32 * 24)) >grey8.bin
succeeds convert grey8.bin mono.png --format Mono8 --size 32x24
check "mono becomes an 8-bit grey file" is_png mono.png 32 24 8 $grey
check "convert tells what it wrote" grep -qF 'wrote mono.png: 32 x 24, Mono8' out

samples $((32 * 24 * 3 / 2)) >bayer12p.bin
for mode in fast hq classic; do
  succeeds convert bayer12p.bin $mode.png --format BayerRG12p --size 32x24 --mode $mode
  check "Bayer becomes a colour file by $mode" is_png $mode.png 32 24 8 $rgba
done
succeeds convert bayer12p.bin default.png --format BayerRG12p --size 32x24
check "the default mode is fast" cmp -s default.png fast.png
check "the modes fast and hq differ" [ "$(cmp -s fast.png hq.png && echo same)" = "" ]
check "the modes hq and classic differ" [ "$(cmp -s hq.png classic.png && echo same)" = "" ]

succeeds convert bayer12p.bin rgb12.png --format BayerRG12p --size 32x24 --to RGB12
check "12 bits go into a 16-bit file" is_png rgb12.png 32 24 16 $rgb
succeeds convert bayer12p.bin mono12.png --format Mono12p --size 32x24 --to Mono12
check "12 grey bits go into a 16-bit file" is_png mono12.png 32 24 16 $grey
succeeds convert grey8.bin rgb.png --format RGB8 --size 16x16 --to BGR8
check "RGB becomes BGR" is_png rgb.png 16 16 8 $rgb
succeeds convert grey8.bin upper.PNG --format Mono8 --size 32x24
check "the ending may be in upper case" is_png upper.PNG 32 24 8 $grey

{ printf 'a header'; cat grey8.bin; } >header.bin
succeeds convert header.bin skipped.png --format Mono8 --size 32x24 --skip 8
check "--skip passes over a header" cmp -s skipped.png mono.png

run convert grey8.bin part.png --format Mono8 --size 32x20
check "a longer file converts" [ "$code" -eq 0 ]
check "a longer file gets a note" grep -qF "128 bytes behind the pixels" err
check "a longer file gives a picture" is_png part.png 32 20 8 $grey

mkfifo pipe
cat header.bin >pipe &
succeeds convert pipe piped.png --format Mono8 --size 32x24 --skip 8
wait $!
check "a pipe is read like a file" cmp -s piped.png mono.png
succeeds convert /dev/zero zero.png --format Mono8 --size 32x24
check "a device without an end is read as far as needed" is_png zero.png 32 24 8 $grey

# --- convert, when something is wrong

bayer=(--format BayerRG12p --size 32x24)
mono=(--format Mono8 --size 32x24)
readonly bayer mono

fails 2 "A command is required"
fails 2 "IN is required" convert
fails 2 "OUT, or an output folder by -o, is required" convert grey8.bin "${mono[@]}"
fails 2 "For several inputs an output folder, by -o, is required" convert grey8.bin x.png y.png "${mono[@]}"
fails 2 "--as names the files of an output folder, for which -o is required" convert grey8.bin x.png "${mono[@]}" --as png
fails 2 "--format is required" convert grey8.bin x.png --size 32x24
fails 2 "--size is required" convert grey8.bin x.png --format Mono8
fails 2 "--colour" convert grey8.bin x.png "${mono[@]}" --colour
fails 2 "frobnicate" frobnicate

fails 1 "Did you mean BayerRG12p?" convert bayer12p.bin x.png --format bayerrg12P --size 32x24
fails 1 "Did you mean BayerRG12p" convert bayer12p.bin x.png --format BayerRG12pp --size 32x24
fails 1 "--format: there is no pixel format 'xyzzy'" convert grey8.bin x.png --format xyzzy --size 32x24
fails 1 "'korvel formats' lists" convert grey8.bin x.png --format xyzzy --size 32x24
fails 1 "--to: there is no pixel format 'BGRA9'" convert grey8.bin x.png "${mono[@]}" --to BGRA9
fails 1 "The modes are fast, hq and classic." convert bayer12p.bin x.png "${bayer[@]}" --mode slow

for size in 32 32x x24 32x24x1 0x20x24 -32x24 ' 32x24' 32.0x24 99999999999999999999x1; do
  fails 1 "is not a size" convert grey8.bin x.png --format Mono8 --size="$size"
done
fails 1 "has no pixels" convert grey8.bin x.png --format Mono8 --size 0x24
fails 1 "has no pixels" convert grey8.bin x.png --format Mono8 --size 32x0
fails 1 "more pixels than can be counted" convert grey8.bin x.png --format Mono8 --size 4294967296x4294967296
fails 1 "more bytes than can be counted" convert grey8.bin x.png --format BayerRG12p --size 2305843009213693952x1
fails 1 "'grey8.bin' is too short" convert grey8.bin x.png --format Mono8 --size 4294967296x4

fails 1 "is not a number of bytes" convert grey8.bin x.png "${mono[@]}" --skip=-1
fails 1 "is not a number of bytes" convert grey8.bin x.png "${mono[@]}" --skip=0x10
fails 1 "behind the 10000 that are skipped, and 0 bytes are there" convert grey8.bin x.png "${mono[@]}" --skip 10000
fails 1 "is too short" convert grey8.bin x.png "${mono[@]}" --skip=18446744073709551615

fails 1 "cannot open 'missing.bin': No such file or directory" convert missing.bin x.png "${mono[@]}"
fails 1 "'bin' is a folder" convert bin x.png "${mono[@]}"
fails 1 "32x24 pixels of BayerRG12p take 1152 bytes, and 768 bytes are there" convert grey8.bin x.png "${bayer[@]}"
fails 1 "and 0 bytes are there" convert /dev/null x.png "${mono[@]}"
cp grey8.bin same.png
fails 1 "is the input itself" convert same.png same.png "${mono[@]}"
check "the input is left alone" cmp -s same.png grey8.bin

fails 1 "cannot convert Mono8 to RGB10p32: error: type=Error[1], module_id=9003, txt=ImageConverter: No extension converter" \
  convert grey8.bin x.png "${mono[@]}" --to RGB10p32
check "the formats that exist are listed" grep -qF "Choose by --to: Mono8, BGR8, RGB8, BGRa8, RGBa8, Mono10" err
fails 1 "packed output not supported" convert bayer12p.bin x.png "${bayer[@]}" --to BayerRG10p
fails 1 "cannot write 'x.png': error: type=ImageFormatNotSupported[7], module_id=9001, txt=Unsupported pixel format" convert bayer12p.bin x.png "${bayer[@]}" --to BayerRG12p
fails 1 "FileDirectory invalid" convert grey8.bin missing/x.png "${mono[@]}"
fails 1 "Unknown file format" convert grey8.bin x.tiff "${mono[@]}"
fails 1 "must end in .png, .bmp, .jpg, .jpeg, .raw or .bin" convert grey8.bin x "${mono[@]}"
check "no failure leaves a picture" [ ! -e x.png ]

# --- help

for command in '' formats info inspect view convert simulate record repair-avi wb correct bin mirror rotate histogram line hot-pixels; do
  succeeds ${command:+"$command"} --help
  check "$command --help has examples" grep -q '^  korvel ' out
  grep '^  korvel ' out >>examples
done
succeeds --version
check "--version tells the version" grep -qE '^korvel [0-9]+\.[0-9]+\.[0-9]+$' out

samples $((2592 * 1536 * 3 / 2)) >frame.bin
samples $((512 + 640 * 480 * 5 / 4)) >dump.bin
samples $((640 * 480)) >grey.bin
korvel record killed.avi --size 64x48 --frames 100 --as-fast-as-possible >out
truncate --size=-4000 killed.avi
cp killed.avi damaged.avi
rm -f ./*.png
korvel simulate picture.png --format RGB8 --size 64x48 >out
korvel simulate photo.jpg --format RGB8 --size 64x48 >out
while IFS= read -r example; do
  code=0
  bash -c "$example" >out 2>err </dev/null || code=$?
  check "the example works: $example" [ "$code" -eq 0 ]
  # A busy machine may drop frames in real time, and says so.
  if [[ $example == *' record '* ]]; then sed -i '/^korvel: note: /d' err; fi
  check "the example prints no error: $example" [ ! -s err ]
done <examples
for picture in frame.png frame_hq.png; do
  check "the examples make $picture" is_png $picture 2592 1536 8 $rgba
done
check "the examples make frame_rgb12.png" is_png frame_rgb12.png 2592 1536 16 $rgb
check "the examples make grey.png" is_png grey.png 640 480 8 $grey
check "the examples make scene.png" is_png scene.png 1920 1080 8 $rgb
check "the examples make a numbered stream" [ -s stream_0003.raw ]
check "the examples make a folder of pictures" [ -s pictures/photo.bmp ]
check "the examples make plots" [ -s histogram.svg ]
check "the examples make a plot's picture" is_png histogram.png 1000 560 8 $rgba
check "the examples make videos" [ -s camera12.avi ] && [ -s quick.avi ] && [ -s pictures.avi ] && [ -s dump.avi ]
check "the examples make a recording in several files" [ -s parts-0002.avi ]
check "the examples make a video of a killed recording" [ -s repaired.avi ]
check "the examples mark hot pixels" is_png marked.png 640 480 8 $rgba

ends_well
