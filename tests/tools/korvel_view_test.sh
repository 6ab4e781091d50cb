#!/usr/bin/env bash
# Tests korvel view. Argument: path of the command.
set -euo pipefail

# shellcheck source-path=SCRIPTDIR source=tool_checks.sh
source "$(dirname "$0")/tool_checks.sh"
unset COLORTERM NO_COLOR

is_text() {  # is_text LINE...: that the last run printed these lines
  printf '%s\n' "$@" >expected
  cmp -s out expected
}

in_terminal() {  # in_terminal COMMAND: its output in the file out, on a terminal
  TERM=xterm script -qec "$1" /dev/null </dev/null | tr -d '\r' >out
}

# Red and green above blue and white.
printf '\377\000\000\000\377\000\000\000\377\377\377\377' >four.bin
readonly four=(--format RGB8 --size 2x2)

succeeds view four.bin "${four[@]}" --colours true
check "a character shows two pixels" \
  is_text $'\033[38;2;255;0;0;48;2;0;0;255m▀\033[38;2;0;255;0;48;2;255;255;255m▀\033[0m'
succeeds view four.bin "${four[@]}" --colours 256
check "256 colours have numbers" is_text $'\033[38;5;196;48;5;21m▀\033[38;5;46;48;5;231m▀\033[0m'
printf '\166\166\166\166\166\166' >grey.bin
succeeds view grey.bin --format RGB8 --size 1x2 --colours 256
check "greys come from their scale" is_text $'\033[38;5;243;48;5;243m▀\033[0m'
succeeds view four.bin "${four[@]}"
check "what isn't a terminal gets characters" is_text '.%'
succeeds view grey.bin --format Mono8 --size 2x3 --colours true
check "a last line may have one pixel" is_text \
  $'\033[38;2;118;118;118;48;2;118;118;118m▀\033[38;2;118;118;118;48;2;118;118;118m▀\033[0m' \
  $'\033[38;2;118;118;118m▀\033[38;2;118;118;118m▀\033[0m'

korvel simulate frame.raw --format BayerGB12p --size 320x240 >out
korvel convert frame.raw frame.png --to RGB12 >out
succeeds view frame.raw
check "80 columns are filled" [ "$(awk '{print length($0)}' out | sort -u)" = 80 ]
check "the picture keeps its shape" [ "$(wc -l <out)" -eq 30 ]
cp out packed.txt
succeeds view frame.png
check "a packed mosaic is shown like a picture" cmp -s out packed.txt
succeeds view frame.raw --width 41 --mode hq
check "the width can be chosen" [ "$(awk '{print length($0)}' out | sort -u)" = 41 ]

if command -v script >/dev/null; then
  in_terminal "stty cols 60 rows 11; korvel view frame.png"
  check "a terminal sees 256 colours" grep -qF $'\033[38;5;' out
  check "a picture fits the height of the terminal" [ "$(grep -c ▀ out)" -eq 10 ]
  in_terminal "stty cols 24 rows 50; korvel view frame.png"
  check "a picture fits the width of the terminal" [ "$(grep -o ▀ out | wc -l)" -eq $((24 * 9)) ]
  in_terminal "COLORTERM=truecolor korvel view frame.png"
  check "a terminal may see true colours" grep -qF $'\033[38;2;' out
  in_terminal "NO_COLOR=1 korvel view frame.png"
  check "colours may be unwanted" [ "$(grep -c $'\033' out)" -eq 0 ]
fi

if command -v script >/dev/null; then
  in_terminal "korvel histogram frame.png"
  check "plots have colours too" grep -qF $'\033[31m' out
  in_terminal "NO_COLOR=1 korvel histogram frame.png"
  check "plots are without colours where they are unwanted" [ "$(grep -c $'\033' out)" -eq 0 ]
  in_terminal "stty cols 40 rows 24; NO_COLOR=1 korvel histogram frame.png"
  check "plots fit the width of the terminal" [ "$(grep -F '┤' out | LC_ALL=C.UTF-8 wc -L)" -eq 40 ]
fi

fails 1 "The choices are auto, true, 256 and none." view frame.png --colours blue
fails 1 "The modes are fast, hq and classic." view frame.png --mode slow
fails 1 "Give a whole number from 1 to 10000." view frame.png --width 0
fails 2 "--format is required" view four.bin --size 2x2

ends_well
