#!/usr/bin/env bash
# Measures libkorvel's speed, from nothing: installs what is missing, also the libraries that it is compared with, builds
# the release preset's benchmarks and runs them on one core.
set -euo pipefail

usage() {
  cat <<'HELP'
Usage: scripts/bench.sh [--filter REGEX]

Prints a table of times beside the memory limit, beside other libraries and beside the goals (docs/performance.md tells
what the columns mean), and writes it to build/bench with all figures and a chart. The whole takes less than eight
minutes on an idle machine; other programs at work make figures worthless.

  --filter REGEX   only the benchmarks whose names match, such as 'convert_.*1920x1080'
  --help           this text
HELP
}

filter=.
while (($# > 0)); do
  case "$1" in
    --filter)
      if (($# < 2)); then
        echo "bench: --filter wants a regular expression" >&2
        exit 2
      fi
      filter=$2
      shift
      ;;
    --help | -h)
      usage
      exit 0
      ;;
    *)
      echo "bench: unknown argument '$1'" >&2
      usage >&2
      exit 2
      ;;
  esac
  shift
done

cd "$(dirname "${BASH_SOURCE[0]}")/.."
scripts/install-dependencies.sh --bench
cmake --preset release
cmake --build --preset release --target korvel_benchmarks --parallel "$(nproc)"

# Kept on one core, the last that this process may use, a benchmark neither moves nor meets what the first one serves.
pin=()
if command -v taskset >/dev/null; then
  core=$(sed -n 's/^Cpus_allowed_list:.*[^0-9]\([0-9]\{1,\}\)$/\1/p' /proc/self/status)
  if [[ -n $core ]]; then pin=(taskset --cpu-list "$core"); fi
fi

# In memory where that can be had, files cost what the library and the system make of them and no disk.
if [[ -z ${TMPDIR:-} && -w /dev/shm ]]; then export TMPDIR=/dev/shm; fi

readonly results=build/bench
mkdir -p "$results"
echo
"${pin[@]}" build/release/benchmarks/korvel_benchmarks --benchmark_filter="$filter" \
  --benchmark_out="$results/benchmarks.json" --benchmark_out_format=json --chart="$results/benchmarks.svg" |
  tee "$results/benchmarks.md"
echo
echo "bench: $results/benchmarks.md, $results/benchmarks.json, $results/benchmarks.svg"
