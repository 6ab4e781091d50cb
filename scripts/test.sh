#!/usr/bin/env bash
# Builds libkorvel and runs its tests, from nothing: installs what is missing, configures, builds, tests.
set -euo pipefail

usage() {
  cat <<'HELP'
Usage: scripts/test.sh [--all]

Builds the release preset and runs the test suite; ends in ctest's summary.

  --all    everything: the sweep over all conversion pairs instead of a sample, then the suite under the address and
           undefined-behaviour sanitizers, under the thread sanitizer, and built with clang
  --help   this text
HELP
}

all=false
for argument in "$@"; do
  case "$argument" in
    --all) all=true ;;
    --help | -h)
      usage
      exit 0
      ;;
    *)
      echo "test: unknown argument '$argument'" >&2
      usage >&2
      exit 2
      ;;
  esac
done

cd "$(dirname "${BASH_SOURCE[0]}")/.."
jobs=$(nproc)
readonly all jobs

heading() {
  printf '\n=== %s\n' "$*"
}

# Configures, builds and tests one preset. Further arguments are a command in front of ctest.
run_preset() {
  local preset=$1
  shift
  heading "$preset: configure"
  cmake --preset "$preset"
  heading "$preset: build"
  cmake --build --preset "$preset" --parallel "$jobs"
  heading "$preset: test"
  "$@" ctest --preset "$preset" --parallel "$jobs" --output-on-failure --no-tests=error
}

heading "dependencies"
if ! $all; then
  scripts/install-dependencies.sh
  run_preset release env
  exit
fi

scripts/install-dependencies.sh --all
run_preset release env KORVEL_TEST_FULL_SWEEP=1
run_preset asan-ubsan env

# The thread sanitizer's shadow memory wants a fixed address layout; where it may not be set, the kernel's has to do.
if setarch "$(uname -m)" --addr-no-randomize true 2>/dev/null; then
  run_preset tsan setarch "$(uname -m)" --addr-no-randomize
else
  run_preset tsan env
fi

run_preset clang env
