#!/usr/bin/env bash
# Measures libkorvel's speed, from nothing: installs what is missing, builds the release preset's benchmarks and runs
# them on one core.
set -euo pipefail

usage() {
  cat <<'HELP'
Usage: scripts/bench.sh [--filter REGEX]

Prints a table of times beside the memory limit and beside plain implementations (docs/performance.md tells what the
columns mean), and writes it with all its figures to build/bench. The whole takes about three minutes on an idle
machine; other programs at work make figures worthless.

  --filter REGEX   only the benchmarks whose names match, such as 'demosaic_.*1920x1080'
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
scripts/install-dependencies.sh
cmake --preset release
cmake --build --preset release --target korvel_benchmarks --parallel "$(nproc)"

# Kept on one core, the last that this process may use, a benchmark neither moves nor meets what the first one serves.
pin=()
if command -v taskset >/dev/null; then
  core=$(sed -n 's/^Cpus_allowed_list:.*[^0-9]\([0-9]\{1,\}\)$/\1/p' /proc/self/status)
  if [[ -n $core ]]; then pin=(taskset --cpu-list "$core"); fi
fi

readonly results=build/bench
mkdir -p "$results"
echo
"${pin[@]}" build/release/benchmarks/korvel_benchmarks --benchmark_filter="$filter" \
  --benchmark_out="$results/benchmarks.json" --benchmark_out_format=json | tee "$results/benchmarks.md"
echo
echo "bench: $results/benchmarks.md, $results/benchmarks.json"
