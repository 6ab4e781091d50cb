#!/usr/bin/env bash
# scripts/check-abi.sh finds what breaks programs that are already built. Arguments: the source folder, the library, an
# empty folder to work in.
set -euo pipefail

readonly source=$1 library=$2 work=$3
readonly header=$source/include/korvel/korvel.h

rm -rf "$work"
mkdir -p "$work"

fail() {
  echo "check_abi_test: $*" >&2
  exit 1
}

# What the script says of a header that a command for sed changes.
check() {
  sed -E "$1" "$header" >"$work/korvel.h"
  if cmp --silent "$header" "$work/korvel.h"; then fail "'$1' changes nothing"; fi
  "$source/scripts/check-abi.sh" --header "$work/korvel.h" --library "$library" 2>&1
}

# Fails unless a change is found, and in words that match a pattern: finds PATTERN COMMAND
finds() {
  local said
  if said=$(check "$2"); then fail "'$2' passed: $said"; fi
  [[ $said =~ $1 ]] || fail "'$2' gives: $said"
}

# Fails if a change is found: passes COMMAND
passes() {
  local said
  said=$(check "$1") || fail "'$1' gives: $said"
}

# Signatures.
finds 'KORVEL_IMAGE_HANDLE to KORVEL_GAIN_HANDLE' 's/(KORVEL_Image_Destruct\()KORVEL_IMAGE_HANDLE/\1KORVEL_GAIN_HANDLE/'
finds 'KORVEL_Library_GetVersionMajor.*uint32_t to int32_t' 's/(GetVersionMajor\()uint32_t/\1int32_t/'
finds "parameter 2 of type 'int' was added" 's/(KORVEL_Gain_Destruct\([^)]*)\)/\1, int more)/'
finds 'uint16_t to uint32_t' 's/typedef uint16_t KORVEL_BINNING_MODE/typedef uint32_t KORVEL_BINNING_MODE/'
finds 'uint32_t to uint64_t' 's/typedef uint32_t KORVEL_RETURN_CODE/typedef uint64_t KORVEL_RETURN_CODE/'

# Values.
finds "Timeout' from value '12' to '13'" 's/(RETURN_CODE_Timeout = )12/\113/'
finds "Mono12p' from value" 's/(ROW\(X, Mono12p, )0x010C0047/\10x010C0048/'
finds "1 enumerator deletion" 's/ *KORVEL_RETURN_CODE_NotSupported = 9,//'
finds "Sum' from value '1' to '2'" 's/(BINNING_MODE_Average = 0, )/\1KORVEL_BINNING_MODE_Least = 1, /; s/(MODE_Sum = )1/\12/'

# Structures.
finds "type of 'size_t y' changed" 's/^  size_t y;/  uint32_t y;/'
finds "offset changed" 's/^  size_t x;/  size_t y;/; t; s/^  size_t y;/  size_t x;/'

# A function that is gone.
finds '1 Removed function' 's/^KORVEL_API .* KORVEL_Library_GetVersionMinor\(.*//'

# What is added passes, and so does what only reads differently.
passes 's/^(KORVEL_API KORVEL_RETURN_CODE KORVEL_Library_Get)(VersionMinor\(.*)/&\n\1Next\2/'
passes 's/KORVEL_RETURN_CODE_Timeout = 12/&, KORVEL_RETURN_CODE_Next = 13/'
passes '0,/^enum \{/s//enum { KORVEL_NEXT_MODE_One = 1 };\n&/'
passes 's/Rules that/\n&/; s/(GetVersionMajor\(uint32_t\* )\w+/\1number/'

# Files are named from the caller's folder.
cp "$header" "$work/same.h"
said=$(cd "$work" && "$source/scripts/check-abi.sh" --header same.h --library "$library" 2>&1) ||
  fail "a header in the caller's folder gives: $said"

# A library that exports one function less than the header declares.
nm --dynamic --defined-only --format=posix "$library" |
  awk 'BEGIN { print ".section .note.GNU-stack\n.text" }
       $1 != "KORVEL_Image_Destruct" { print ".globl " $1 "\n" $1 ": ret" }' | as -o "$work/library.o"
cc -shared -o "$work/library.so" "$work/library.o"
if said=$("$source/scripts/check-abi.sh" --library "$work/library.so" 2>&1); then fail "a lost symbol passed"; fi
[[ $said =~ 'exports no longer:'.KORVEL_Image_Destruct.'check-abi' ]] || fail "a lost symbol gives: $said"
echo "check_abi_test: ok"
