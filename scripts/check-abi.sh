#!/usr/bin/env bash
# Tells whether programs that were built against the library as it was run with the library as it is.
set -euo pipefail

usage() {
  cat <<'HELP'
Usage: scripts/check-abi.sh [--update] [--header FILE] [--library FILE]

Compares the interface with tests/package/korvel.abi: functions with their parameters, the values of enumerators, the
layout of structures, and the symbols that the library exports. Fails for what changed or is gone; what was added is
told and passes.

  --update         writes the interface to tests/package/korvel.abi, as a release does after a look at the differences
  --header FILE    instead of include/korvel/korvel.h
  --library FILE   instead of build/release/libkorvel.so
  --help           this text
HELP
}

project=$(realpath "$(dirname "${BASH_SOURCE[0]}")/..")
readonly project
readonly dump=$project/tests/package/korvel.abi
update=false
header=$project/include/korvel/korvel.h
library=$project/build/release/libkorvel.so
while (($# > 0)); do
  case "$1" in
    --update) update=true ;;
    --header | --library)
      if (($# < 2)); then
        echo "check-abi: $1 wants a file" >&2
        exit 2
      fi
      declare "${1#--}=$(realpath "$2")"
      shift
      ;;
    --help | -h)
      usage
      exit 0
      ;;
    *)
      echo "check-abi: unknown argument '$1'" >&2
      usage >&2
      exit 2
      ;;
  esac
  shift
done
for file in "$header" "$library"; do
  if [[ ! -r $file ]]; then
    echo "check-abi: cannot read $file" >&2
    exit 2
  fi
done

work=$(mktemp -d)
readonly work
trap 'rm -rf "$work"' EXIT

# The release build has no debugging information, from which types are read. It comes from the header itself, as a
# library of its functions with no more than a body; that the real ones are declared alike is the compiler's business.
# Enumerations get a name by their first value and a variable, so that they belong to the interface.
sed -z -E 's/(KORVEL_API KORVEL_RETURN_CODE\s[^;]*);/\1 { return 0; }/g' "$header" | cc -E -P -x c - |
  sed -z -E 's/enum \{\s*(KORVEL_\w+)([^}]*)\};/enum kind_of_\1 { \1\2 };\
    __attribute__((visibility("default"))) enum kind_of_\1 value_of_\1;/g' >"$work/interface.c"
(cd "$work" && cc -std=c99 -g -shared -fPIC -fvisibility=hidden -o interface.so interface.c)
abidw --no-corpus-path --no-comp-dir-path --no-show-locs --no-elf-needed --type-id-style hash \
  --out-file "$work/korvel.abi" "$work/interface.so"

functions() {
  sed -n "s/.*<elf-symbol name='\([^']*\)'.* type='func-type'.*/\1/p" "$1" | LC_ALL=C sort
}
nm --dynamic --defined-only --format=posix "$library" | sed 's/ .*//' | LC_ALL=C sort >"$work/exported"

if $update; then
  if ! functions "$work/korvel.abi" | cmp --silent - "$work/exported"; then
    echo "check-abi: the library doesn't export what the header declares; is it built?" >&2
    exit 1
  fi
  cp "$work/korvel.abi" "$dump"
  exit
fi

failed=false
# The lowest bits tell errors, the next that there are differences; with additions left out, each counts.
abidiff --no-added-syms "$dump" "$work/korvel.abi" || failed=true
lost=$(functions "$dump" | LC_ALL=C comm -23 - "$work/exported")
if [[ -n $lost ]]; then
  printf 'the library exports no longer:\n%s\n' "$lost"
  failed=true
fi
added=$(functions "$dump" | LC_ALL=C comm -13 - "$work/exported")
if [[ -n $added ]]; then printf 'new since the dump:\n%s\n' "$added"; fi
if $failed; then
  echo "check-abi: programs that were built before this won't run with it"
  exit 1
fi
