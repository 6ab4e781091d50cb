#!/usr/bin/env bash
# Runs clang-tidy over the project's sources with the compile commands of the dev preset, and shellcheck over its
# scripts.
set -euo pipefail

usage() {
  cat <<'HELP'
Usage: scripts/lint.sh [FILE...]

Checks the C++ files given, or all that the dev preset compiles; headers come with the files that include them.
HELP
}

files=()
for argument in "$@"; do
  case "$argument" in
    --help | -h)
      usage
      exit 0
      ;;
    -*)
      echo "lint: unknown argument '$argument'" >&2
      usage >&2
      exit 2
      ;;
    *) files+=("$(realpath "$argument")") ;;
  esac
done

cd "$(dirname "${BASH_SOURCE[0]}")/.."
scripts/install-dependencies.sh --lint
cmake --preset dev >/dev/null
readonly commands=build/dev/compile_commands.json

if ((${#files[@]} == 0)); then
  shellcheck scripts/*.sh .ci/run tests/docs/*.sh tests/package/*.sh tests/tools/*.sh
  # Generated files lie below build/ and are not ours to check.
  mapfile -t files < <(sed -n 's/^ *"file": "\(.*\.cpp\)".*/\1/p' "$commands" | grep -v '/build/' | sort -u)
fi

# The commands are those of g++, which knows warnings that clang does not.
printf '%s\0' "${files[@]}" |
  xargs -0 -P "$(nproc)" -n 1 clang-tidy -p build/dev --quiet --extra-arg=-Wno-unknown-warning-option
echo "lint: ${#files[@]} files clean"
