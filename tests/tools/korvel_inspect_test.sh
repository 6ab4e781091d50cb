#!/usr/bin/env bash
# Tests korvel inspect on frames whose format is known. Argument: path of the command.
set -euo pipefail

# shellcheck source-path=SCRIPTDIR source=tool_checks.sh
source "$(dirname "$0")/tool_checks.sh"

first_rank() {  # the formats of the first rank that the last run told, each followed by a space
  awk '$1 == 1 {print $4}' out | tr '\n' ' '
}

# --- every format

while read -r format; do
  korvel simulate frame.bin --format "$format" --size 160x120 >out
  succeeds inspect frame.bin --size 160x120
  check "$format is found, not $(first_rank)" [ "$(first_rank | cut -d' ' -f1)" = "$format" ]
  # Red and blue may be exchanged, and words of 10 bits are words of 12 as well.
  tied=2
  if [[ $format == Mono* ]]; then tied=1; fi
  if [[ $format == *10 ]]; then tied=$((2 * tied)); fi
  check "$format is told from all but $tied: $(first_rank)" [ "$(first_rank | wc -w)" -eq $tied ]
done < <(korvel formats | awk '/^0x/ {print $2}')

# --- what it tells

korvel simulate frame.bin --format BayerGB12p --size 160x120 >out
succeeds inspect frame.bin --size 160x120
check "red and blue are in doubt" grep -qF "The order of the colours cannot be told within the first rank" out
check "formats of other sizes are refused" grep -qE '^  takes 38400 bytes: Mono10 .*BayerBG12$' out
check "the command to convert it is printed" \
  grep -qxF '  korvel convert frame.bin picture.png --to BGRa8 --size 160x120 --format BayerGB12p' out
sed -n 's/^  \(korvel convert\)/\1/p' out >command.sh
bash command.sh >out
check "the command to convert it works" grep -qF "wrote picture.png" out
check "the command to convert it makes a picture" is_png picture.png 160 120 8 "$rgba"
succeeds inspect frame.bin --size 160x120 -o sheet.png
check "the best are shown side by side" grep -qF "wrote sheet.png" out
check "the sheet has two lines of pictures" is_png sheet.png 1360 364 8 "$rgba"
succeeds inspect frame.bin --size 160x120 --json -o sheet.png
if command -v python3 >/dev/null; then
  check "inspect --json is JSON" python3 -c '
import json
report = json.load(open("out"))
assert report["bytes"] == 28800 and report["width"] == 160
assert report["guesses"][0]["format"] == "BayerGB12p" and report["guesses"][1]["rank"] == 1
assert len(report["guesses"]) == 10 and len(report["excluded"]) == 39
assert report["guesses"][0]["score"] < report["guesses"][2]["score"]
assert report["excluded"][0] == {"format": "Mono8", "reason": "takes 19200 bytes"}'
fi

korvel simulate grey.bin --format Mono8 --size 160x120 >out
succeeds inspect grey.bin --size 160x120
check "a grey picture may be a mosaic" grep -qF "No colours are seen" out
korvel simulate large.bin --format Mono8 --size 640x480 >out
succeeds inspect large.bin --size 600x512
check "a wrong width is noticed" grep -qF "check the width" out
succeeds inspect large.bin --size 640x480
check "the right width is accepted" [ "$(grep -c "check the width" out)" -eq 0 ]
head -c 19200 /dev/urandom >noise.bin
succeeds inspect noise.bin --size 160x120
check "noise is noticed" grep -qF "this is noise" out
korvel simulate ten.bin --format Mono10 --size 160x120 >out
succeeds inspect ten.bin --size 160x120
check "10 bits may be 12" grep -qF "10 bits or 12 cannot be told" out

cp grey.bin $'latin-\344.bin'
succeeds inspect $'latin-\344.bin' --size 160x120 -o latin.png
check "a sheet is drawn of a file whose name is no UTF-8" [ -s latin.png ]

# --- bytes too many

samples 512 >header.bin
cat header.bin frame.bin >behind.bin
cat frame.bin header.bin >before.bin
succeeds inspect behind.bin --size 160x120
check "a header is found" [ "$(awk '$1 == 1 {print $4, $5, $6}' out | head -n 1)" = "BayerGB12p --skip 512" ]
check "sizes that fit are named" grep -qF "No frame of this size takes exactly the bytes that are there." out
succeeds inspect before.bin --size 160x120
check "bytes behind the pixels are found" [ "$(awk '$1 == 1 {print NF, $4}' out | head -n 1)" = "4 BayerGB12p" ]
succeeds inspect behind.bin --size 160x120 --skip 512
check "a header that is given is skipped" [ "$(first_rank)" = "BayerGB12p BayerGR12p " ]

# --- words of 16 bits

samples 38400 >words.bin
succeeds inspect words.bin --size 160x120
check "values of 16 bits have no format" grep -qF "No format is possible." out
printf '\360\377%.0s' {1..48} >shifted.bin
succeeds inspect shifted.bin --size 8x6
check "shifted values are noticed" \
  grep -qF "holds values up to 65520, more than 12 bits; the low 4 bits are 0: shift all words right by them" out
printf '\017\377%.0s' {1..48} >swapped.bin
succeeds inspect swapped.bin --size 8x6
check "big-endian words are noticed" grep -qF "it may be big-endian: Mono12" out

korvel convert grey.bin grey.png --format Mono8 --size 160x120 >out
succeeds inspect grey.png --size 80x60
check "a picture is not taken for a dump" grep -qF "The name is that of a PNG file" out
succeeds inspect grey.bin --size 160x120
check "a dump is no picture" [ "$(grep -c "The name is that of" out)" -eq 0 ]

# --- when something is wrong

fails 1 "'grey.bin' is too short for 1600x120 pixels of any format" inspect grey.bin --size 1600x120
check "sizes that fit are named" \
  grep -qF "These sizes take all bytes: 160x120 at 8 bits a pixel, 128x120 at 10 bits a pixel, 80x120" err
fails 1 "No size of this width or height takes all bytes" inspect grey.bin --size 1601x1201
fails 1 "what comes from a pipe or a device has to be saved first" inspect /dev/zero --size 8x6
fails 1 "No such file or directory" inspect missing.bin --size 8x6
fails 1 "is not a size" inspect grey.bin --size 160
fails 2 "--size is required" inspect grey.bin
fails 1 "Pictures are .png, .jpg, .jpeg and .bmp files." inspect grey.bin --size 160x120 -o sheet.raw
fails 1 "is the input itself" inspect grey.bin --size 160x120 -o grey.bin

ends_well
