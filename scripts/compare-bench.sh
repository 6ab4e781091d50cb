#!/usr/bin/env bash
# Tells what got slower and what got faster between two runs of scripts/bench.sh.
set -euo pipefail

usage() {
  cat <<'HELP'
Usage: scripts/compare-bench.sh [--threshold PERCENT] OLD.json NEW.json

Compares the times of two files that scripts/bench.sh wrote, and prints the operations that got slower or faster: by
more than PERCENT (10 by default) in the median, and by more than the rounds of one run vary, so that the middle halves
of both runs' rounds don't overlap. "limit" is how much the memory limit itself changed: where it did as much, the
machine is another one or was busy. Exits with 1 if anything got slower, and with 2 if the files can't be compared.

  --threshold PERCENT   the least change that counts
  --help                this text
HELP
}

threshold=10
files=()
while (($# > 0)); do
  case "$1" in
    --threshold)
      if (($# < 2)) || [[ ! $2 =~ ^[0-9]+([.][0-9]+)?$ ]]; then
        echo "compare-bench: --threshold wants a number of per cent" >&2
        exit 2
      fi
      threshold=$2
      shift
      ;;
    --help | -h)
      usage
      exit 0
      ;;
    -*)
      echo "compare-bench: unknown argument '$1'" >&2
      usage >&2
      exit 2
      ;;
    *) files+=("$1") ;;
  esac
  shift
done
if ((${#files[@]} != 2)); then
  usage >&2
  exit 2
fi
for file in "${files[@]}"; do
  if [[ ! -r $file ]]; then
    echo "compare-bench: cannot read $file" >&2
    exit 2
  fi
done

if ! command -v jq >/dev/null; then "$(dirname "${BASH_SOURCE[0]}")/install-dependencies.sh" --bench >&2; fi

# Google Benchmark adds what it was told about rounds and clocks to names.
read -r -d '' program <<'JQ' || true
def times: [.benchmarks[] | select(.ns != null) | {key: (.name | sub("/iterations:.*"; "")), value: .}] | from_entries;
def percent: (. - 1) * 1000 | round / 10 | (if . > 0 then "+" else "" end) + "\(.) %";
def row: "| \(.name) | \(.old) | \(.new) | \(.change | percent) | \(if .limit then .limit | percent else "" end) |";
def rounded: if . >= 100 then round else . * 100 | round / 100 end;
def table($title): if length == 0 then empty else
  "\($title):\n\n| operation, formats, size | old ns | new ns | change | limit |\n| --- | ---: | ---: | ---: | ---: |",
  (sort_by(.change) | .[] | row), "" end;

($old[0] | times) as $before | ($new[0] | times) as $after
| [$after | keys_unsorted[] | select($before[.])] as $common
| [$common[] | . as $name | $before[.] as $b | $after[.] as $a
   | {name: $name, old: ($b.ns | rounded), new: ($a.ns | rounded), change: ($a.ns / $b.ns),
      limit: (if $a.limit_ns and $b.limit_ns then $a.limit_ns / $b.limit_ns else null end),
      isSlower: ($a.ns > $b.ns * (1 + $threshold / 100) and $a.ns_q1 > $b.ns_q3),
      isFaster: ($a.ns * (1 + $threshold / 100) < $b.ns and $a.ns_q3 < $b.ns_q1)}] as $rows
| ([$rows[] | select(.isSlower)] | table("Slower")),
  ([$rows[] | select(.isFaster)] | table("Faster")),
  "\($rows | length) compared: \([$rows[] | select(.isSlower)] | length) slower, \([$rows[] | select(.isFaster)] | length) faster by more than \($threshold) %.",
  (if $old[0].context.processor != $new[0].context.processor then "The processors differ." else empty end),
  (if ($common | length) == 0 then "compare-bench: the files have no operation in common\n" | halt_error(2)
   elif any($rows[]; .isSlower) then "" | halt_error(1) else empty end)
JQ

jq --null-input --raw-output --argjson threshold "$threshold" --slurpfile old "${files[0]}" \
  --slurpfile new "${files[1]}" "$program"
