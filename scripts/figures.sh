#!/usr/bin/env bash
# Makes the documents' figures and their generated tables anew, from the library itself.
set -euo pipefail

usage() {
  cat <<'HELP'
Usage: scripts/figures.sh [--check BUILD]

Builds the program that draws the figures, lets it draw them into docs/figures, and writes the tables between the
marks "<!-- generated: ... -->" and "<!-- end of generated -->" of the pages in docs.

  --check BUILD  build and write nothing: tell what differs from what the programs of that build folder make
  --help         this text
HELP
}

check=false
build=build/release
case "${1-}" in
  '') ;;
  --check)
    check=true
    build=${2:?--check needs a build folder}
    ;;
  --help | -h)
    usage
    exit 0
    ;;
  *)
    echo "figures: unknown argument '$1'" >&2
    usage >&2
    exit 2
    ;;
esac

build=$(realpath -m "$build")
cd "$(dirname "${BASH_SOURCE[0]}")/.."
if ! $check; then
  scripts/install-dependencies.sh
  cmake --preset release
  cmake --build --preset release --target korvel-figures korvel-tool --parallel "$(nproc)"
fi

if ! command -v convert-im6.q16 >/dev/null; then
  echo "figures: convert-im6.q16 is missing, by which pictures are compared; scripts/install-dependencies.sh has it" >&2
  exit 1
fi
made=$(mktemp -d)
trap 'rm -rf "$made"' EXIT
"$build/tools/korvel-figures" "$made/figures"
mkdir "$made/tables"
mv "$made"/figures/*.md "$made/tables"
"$build/tools/korvel" formats --as all --markdown >"$made/tables/formats.md"

# What the page would be with the table that its marks name.
with_tables() {  # with_tables PAGE
  awk -v tables="$made/tables/" '
    /^<!-- generated: / {
      print
      file = tables $3
      while ((status = (getline line < file)) > 0) print line
      if (status < 0) { print "figures: nothing makes the table " $3 > "/dev/stderr"; exit 1 }
      close(file)
      skipping = 1
    }
    /^<!-- end of generated -->$/ { skipping = 0 }
    !skipping && !/^<!-- generated: /
  ' "$1"
}

same_pixels() {  # same_pixels A B
  [[ $1 == *.png ]] || { cmp -s "$1" "$2"; return; }
  cmp -s <(convert-im6.q16 "$1" rgba:-) <(convert-im6.q16 "$2" rgba:-)
}

failures=0
complain() {
  echo "figures: $1; scripts/figures.sh makes it anew" >&2
  failures=$((failures + 1))
}

for page in docs/*.md; do
  grep -q '^<!-- generated: ' "$page" || continue
  with_tables "$page" >"$made/page.md"
  cmp -s "$page" "$made/page.md" && continue
  if $check; then
    complain "a table of $page is not what the programs say"
  else
    cp "$made/page.md" "$page"
    echo "figures: wrote $page"
  fi
done

for figure in "$made"/figures/*; do
  kept=docs/figures/$(basename "$figure")
  if [[ -e $kept ]] && same_pixels "$figure" "$kept"; then continue; fi
  if $check; then
    complain "$kept is not what the library makes"
  else
    mkdir -p docs/figures
    cp "$figure" "$kept"
    echo "figures: wrote $kept"
  fi
done

# A figure that is made on processors with AVX alone.
for kept in docs/figures/*; do
  [[ -e $made/figures/$(basename "$kept") || $kept == *-avx.png ]] || complain "nothing makes $kept"
done
((failures == 0))
