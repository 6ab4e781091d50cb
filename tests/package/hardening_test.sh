#!/usr/bin/env bash
# What SECURITY.md says of the built files holds. Arguments: nm, readelf, and the library or a program.
set -euo pipefail

readonly nm=$1 readelf=$2 file=$3

fail() {
  echo "hardening_test: $file: $*" >&2
  exit 1
}

headers=$("$readelf" --program-headers --wide "$file")
dynamic=$("$readelf" --dynamic --wide "$file")
imported=$("$nm" --dynamic --undefined-only "$file")

grep -q 'GNU_RELRO' <<<"$headers" || fail "tables of addresses stay writable"
grep -q 'BIND_NOW' <<<"$dynamic" || fail "addresses of functions are looked up while it runs"
grep -qE 'GNU_STACK .* RW +0x' <<<"$headers" || fail "the stack is executable"
! grep -qE 'LOAD .* RWE ' <<<"$headers" || fail "memory is writable and executable"
! grep -q 'TEXTREL' <<<"$dynamic" || fail "code is changed when it is loaded"
[[ $("$readelf" --file-header "$file") == *"DYN ("* ]] || fail "it has a fixed address"
grep -q '__stack_chk_fail' <<<"$imported" || fail "no guard on the stack"
grep -qE '__[a-z]+_chk(@|$)' <<<"$imported" || fail "no checked functions of the C library"
echo "hardening_test: ok"
