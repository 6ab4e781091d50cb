#!/usr/bin/env bash
# Lays out the project's C and C++ files with clang-format, or checks that they are.
set -euo pipefail

usage() {
  cat <<'HELP'
Usage: scripts/format.sh [--check] [FILE...]

Formats the files in place; without FILE, all C and C++ files of the project.

  --check  changes nothing, names what would change and fails if there is something
  --help   this text
HELP
}

arguments=(-i)
files=()
for argument in "$@"; do
  case "$argument" in
    --check) arguments=(--dry-run --Werror) ;;
    --help | -h)
      usage
      exit 0
      ;;
    -*)
      echo "format: unknown argument '$argument'" >&2
      usage >&2
      exit 2
      ;;
    *) files+=("$(realpath "$argument")") ;;
  esac
done

cd "$(dirname "${BASH_SOURCE[0]}")/.."
if ! command -v clang-format >/dev/null; then
  scripts/install-dependencies.sh --lint
fi

if ((${#files[@]} == 0)); then
  mapfile -d '' -t files < <(find . \( -name build -o -name '.?*' \) -prune -o -type f \
    \( -name '*.h' -o -name '*.c' -o -name '*.cpp' -o -name '*.hpp' -o -name '*.inl' \) -print0 | sort -z)
fi

clang-format --style=file "${arguments[@]}" "${files[@]}"
echo "format: ${#files[@]} files"
