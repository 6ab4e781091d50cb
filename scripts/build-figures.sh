#!/usr/bin/env bash
# Measures what CONTRIBUTING.md tells: build times without a compiler cache, and the library's size. Prints lines of
# Markdown to put there.
set -euo pipefail

if [[ $# -gt 0 ]]; then
  echo "Usage: scripts/build-figures.sh" >&2
  [[ $1 == --help || $1 == -h ]] && exit 0
  exit 2
fi

cd "$(dirname "${BASH_SOURCE[0]}")/.."
scripts/install-dependencies.sh >&2

readonly build=build/figures
readonly touched=processing/conversion/unpack_packed.cpp

seconds_of() {
  local start end
  start=$(date +%s%N)
  "$@" >&2
  end=$(date +%s%N)
  printf '%d.%d' $(((end - start) / 1000000000)) $(((end - start) / 100000000 % 10))
}

rm -rf "$build"
# An empty launcher keeps a compiler cache out of the measurement.
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_COMPILER_LAUNCHER= -DKORVEL_BUILD_TESTS=OFF \
  -DKORVEL_BUILD_BENCHMARKS=OFF -DKORVEL_BUILD_TOOLS=OFF >&2
full=$(seconds_of cmake --build "$build" --target korvel)
touch "$touched"
again=$(seconds_of cmake --build "$build" --target korvel)

library=$(find "$build" -name 'libkorvel.so.*.*.*' -type f)
strip -o "$build/stripped" "$library"
functions=$(nm --dynamic --defined-only "$library" | grep -c ' KORVEL_')

echo "- Library from nothing, $(nproc) cores, $(c++ --version | head -n 1), no compiler cache: $full s"
echo "- After a change of \`$touched\`: $again s"
echo "- \`$(basename "$library")\`: $(($(stat -c %s "$library") / 1024)) KiB, stripped" \
  "$(($(stat -c %s "$build/stripped") / 1024)) KiB, $functions exported functions"
