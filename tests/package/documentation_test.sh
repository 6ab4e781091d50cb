#!/usr/bin/env bash
# Builds the HTML documentation, follows its links, and shows that a header with a gap in it fails. Arguments: doxygen,
# the folder with its configurations, the C header, an empty folder to work in.
set -euo pipefail

readonly doxygen=$1 configurations=$2 header=$3 work=$4

rm -rf "$work"
mkdir -p "$work"

fail() {
  echo "documentation_test: $*" >&2
  exit 1
}

# Runs doxygen with a configuration and lines that override some of it.
run() {
  { cat "$configurations/$1" && printf '%s\n' "${@:2}" "OUTPUT_DIRECTORY=$work"; } | "$doxygen" -
}

run Doxyfile
run Doxyfile.header

# Every link inside leads somewhere.
readonly html=$work/html
[[ -s $html/index.html && -s $html/group__korvel__image.html ]] || fail "no pages"
broken=$(grep -hoE '(href|src)="[^"#:]+["#]' "$html"/*.html | cut -d '"' -f 2 | tr -d '#' | sort -u |
  while read -r link; do [[ -e $html/$link ]] || echo "$link"; done)
[[ -z $broken ]] || fail "links that lead nowhere: $broken"

# Fails unless doxygen complains about a header that sed has changed: expect_gap SED-EXPRESSION COMPLAINT
expect_gap() {
  local output
  sed -E "$1" "$header" >"$work/korvel.h"
  cmp -s "$header" "$work/korvel.h" && fail "'$1' changes nothing"
  output=$(run Doxyfile.header "INPUT=$work/korvel.h" 2>&1) && fail "'$1' passes"
  [[ $output == *"$2"* ]] || fail "'$1' complains otherwise: $output"
}
expect_gap '/@param xPos /d' "parameter 'xPos'"
expect_gap '/@param width /s/width/breadth/' "'breadth' of command @param is not found"
expect_gap '/The width of an image\./,/\*\//{/@retval/d}' 'return type of member KORVEL_Image_GetWidth is not documented'
expect_gap '/^\/\*\*$/{N;s/^\/\*\*(\n \* The width of an image\.)/\/*\1/}' 'KORVEL_Image_GetWidth'
