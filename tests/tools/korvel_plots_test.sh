#!/usr/bin/env bash
# Tests the commands of korvel that measure: histogram, line and hot-pixels. Argument: path of the command.
set -euo pipefail

# shellcheck source-path=SCRIPTDIR source=tool_checks.sh
source "$(dirname "$0")/tool_checks.sh"

has_lines() {  # has_lines FILE LINE...: from the first on
  local file=$1
  shift
  [ "$(head -n $# "$file")" = "$(printf '%s\n' "$@")" ]
}

printf '\001\002\003\004\005\005' >six.bin
readonly six=(--format Mono8 --size 3x2)

# --- histogram

succeeds histogram six.bin "${six[@]}" -o bins.csv
check "a histogram becomes a table" has_lines bins.csv value,grey 0,0 1,1 2,1 3,1 4,1 5,2 6,0
check "a table has a line for each value" [ "$(wc -l <bins.csv)" -eq 257 ]
succeeds histogram six.bin --format BGR8 --size 2x1 -o bins.csv
check "a table has a column for each colour" has_lines bins.csv value,red,green,blue 0,0,0,0 1,0,0,1 2,0,1,0 3,1,0,0
cp six.bin $'latin-\344.bin'
succeeds histogram $'latin-\344.bin' "${six[@]}" -o latin.svg
check "a file whose name is no UTF-8 gets a plot" [ -s latin.svg ]
korvel simulate colour.raw --format RGBa10 --size 64x48 >out
succeeds histogram colour.raw -o bins.csv
check "alpha has no curve" has_lines bins.csv value,red,green,blue
check "10 bits have 1024 values" [ "$(wc -l <bins.csv)" -eq 1025 ]
korvel simulate packed.raw --format BayerGB12p --size 64x48 >out
succeeds histogram packed.raw -o bins.csv
check "a mosaic's colours are counted together" has_lines bins.csv "value,all colours"
check "all pixels are counted" [ "$(awk -F, 'NR > 1 {sum += $2} END {print sum}' bins.csv)" -eq $((64 * 48)) ]

for arguments in '' --log; do
  for picture in plot.svg plot.png plot.jpg plot.bmp; do
    # shellcheck disable=SC2086  # no word is meant, or one
    succeeds histogram colour.raw -o $picture $arguments
  done
  check "an SVG file is whole" grep -qF '</svg>' plot.svg
  check "a plot becomes a PNG file" is_png plot.png 1000 560 8 "$rgba"
done

succeeds histogram colour.raw
check "each channel is printed" [ "$(grep -cE '^(red|green|blue), mean [0-9.]+$' out)" -eq 3 ]
check "what isn't a terminal sees no colours" [ "$(grep -c $'\033' out)" -eq 0 ]
check "axes have units" grep -qF 'number of pixels over value (0 to 1023)' out
if command -v script >/dev/null; then
  script -qec 'korvel histogram colour.raw' /dev/null >out </dev/null
  check "a terminal sees colours" grep -qF $'\033[31m' out
fi

fails 1 "Plots are .svg, .png, .jpg, .jpeg, .bmp and .csv files." histogram colour.raw -o plot.txt
fails 1 "cannot open 'missing/plot.svg'" histogram colour.raw -o missing/plot.svg
fails 1 "is the input itself" histogram six.bin "${six[@]}" -o six.bin

# --- line

succeeds line six.bin "${six[@]}" --row 1 -o line.csv
check "a row becomes a table" has_lines line.csv column,grey 0,4 1,5 2,5
check "a row has no more values than pixels" [ "$(wc -l <line.csv)" -eq 4 ]
succeeds line six.bin "${six[@]}" --column 2 -o line.csv
check "a column becomes a table" has_lines line.csv row,grey 0,3 1,5
succeeds line six.bin --format BGR8 --size 1x2 --column 0 -o line.csv
check "channels are told by their colours" has_lines line.csv row,red,green,blue 0,3,2,1 1,5,5,4
succeeds line six.bin --format BayerGR8 --size 3x2 --row 0 -o line.csv
check "a mosaic's row is told by its colours" has_lines line.csv column,red,green 0,,1 1,2, 2,,3
for picture in line.svg line.png; do succeeds line colour.raw --row 20 -o $picture; done
check "a line becomes a PNG file" is_png line.png 1000 560 8 "$rgba"
succeeds line colour.raw --column 63
check "a line is printed" grep -qF 'value (0 to 1023) over row (pixels from the top)' out

check "a line shows no alpha" [ "$(grep -cE '^(red|green|blue|alpha)' out)" -eq 3 ]

fails 2 "Either --row or --column is required" line colour.raw
fails 2 "Either --row or --column is required" line colour.raw --row 1 --column 1
fails 1 "Give a whole number from 0 to 47" line colour.raw --row 48
fails 1 "Give a whole number from 0 to 63" line colour.raw --column=-1

# --- hot-pixels

{
  head -c $((7 * 16 + 5)) /dev/zero
  printf '\310'
  head -c $((8 * 16 + 10)) /dev/zero
} >one.bin
readonly one=(--format Mono8 --size 16x16)
succeeds hot-pixels one.bin "${one[@]}"
check "a hot pixel is found" has_lines out "1 hot pixel at level 3"
check "a hot pixel is told" grep -qE '^ +5 +7 +200$' out
succeeds hot-pixels one.bin "${one[@]}" --json
if command -v python3 >/dev/null; then
  check "hot-pixels --json is JSON" python3 -c '
import json
assert json.load(open("out")) == [{"x": 5, "y": 7, "value": 200}]'
fi
succeeds hot-pixels one.bin "${one[@]}" -o marked.png
check "hot pixels are marked" is_png marked.png 16 16 8 "$rgba"
succeeds convert marked.png marked.bin
check "the ring is red" [ "$(bytes_of marked.bin $((4 * (7 * 16 + 10))) 1)" != 00 ]
check "the hot pixel is left to be seen" [ "$(bytes_of marked.bin $((4 * (7 * 16 + 5))) 4)" = c8c8c8ff ]
succeeds hot-pixels /dev/zero "${one[@]}"
check "a frame without hot pixels has none" has_lines out "0 hot pixels at level 3"

fails 1 "Give a whole number from 1 to 5" hot-pixels one.bin "${one[@]}" --level 0
fails 1 "Hot pixels are those of a sensor" hot-pixels colour.raw
fails 1 "Pictures are .png, .jpg, .jpeg and .bmp files." hot-pixels one.bin "${one[@]}" -o marked.raw

ends_well
