#!/usr/bin/env bash
# Tells whether the library runs on the processors that it promises to run on.
set -euo pipefail

usage() {
  cat <<'HELP'
Usage: scripts/check-instructions.sh [LIBRARY [VECTOR_OBJECT...]]

Disassembles the library (build/release/libkorvel.so by default), and fails for an instruction that every x86-64
processor needn't have. Functions in a namespace avx or avx2 may use that set and what comes with it, but nothing that
the records of processor features don't know: no FMA, BMI, F16C or AVX-512. The library has to be unstripped.

VECTOR_OBJECTs are the object files of the vector units. They fail for each function outside those namespaces that the
linker may take in place of its namesake in another object, whether it did so this time or not.
HELP
}

case "${1-}" in
  --help | -h)
    usage
    exit 0
    ;;
  -*)
    echo "check-instructions: unknown argument '$1'" >&2
    usage >&2
    exit 2
    ;;
esac
readonly library=${1-$(dirname "${BASH_SOURCE[0]}")/../build/release/libkorvel.so}
shift $(($# > 0))
for file in "$library" "$@"; do
  if [[ ! -r $file ]]; then
    echo "check-instructions: cannot read $file" >&2
    exit 2
  fi
done

# What is encoded with VEX, EVEX, or in the opcode maps 0f38 and 0f3a is younger than x86-64, whatever its name. Names
# tell the rest. tzcnt is missing on purpose: compilers write it where older processors, which take it for bsf, do the
# same.
read -r -d '' program <<'AWK' || true
function extension(bytes, name, operands) {
  if (bytes ~ /^62 /) return "AVX-512"
  if (bytes ~ /^c[45] /) {
    if (name ~ /^k/) return "AVX-512"
    if (name ~ /^(andn|bextr|blsi|blsmsk|blsr)$/) return "BMI1"
    if (name ~ /^(bzhi|mulx|pdep|pext|rorx|sarx|shlx|shrx)$/) return "BMI2"
    if (name ~ /^vfn?m(add|sub)/) return "FMA"
    if (name ~ /^vcvt(ph2ps|ps2ph)$/) return "F16C"
    if (name ~ /^v(aes|pclmul)/) return "AES"
    if (name ~ /^v(gf2p8|pdp)/) return "AVX-512"
    if (name ~ /^v(p?gather|pblendd|pbroadcast|permd|permp[sd]|permq|pmaskmov|psllv|psrlv|psrav)/) return "AVX2"
    if (name ~ /i128$/ || name ~ /^vbroadcasts[sd]$/ && operands ~ /^%xmm/) return "AVX2"
    # Of the operations on integers, AVX has only these for whole registers.
    if (name ~ /^v(p|movntdqa|mpsadbw)/ && name !~ /^vp(erm2f128|ermilp[sd]|test)$/ && operands ~ /%ymm/) return "AVX2"
    return "AVX"
  }
  if (name ~ /^(aes|pclmul)/) return "AES"
  if (name ~ /^(sha1|sha256|gf2p8|adcx|adox|movbe)/) return toupper(name)
  if (bytes ~ /^0f 3[8a] /) return "SSE4"
  if (name ~ /^(addsubp[sd]|haddp[sd]|hsubp[sd]|lddqu|movddup|movs[hl]dup|fisttpl?l?)$/) return "SSE3"
  if (name ~ /^(popcnt|lzcnt)/) return toupper(name)
  if (name ~ /^(extrq|insertq|movnts[sd])$/) return "SSE4A"
  if (name ~ /^(rdrand|rdseed|cmpxchg16b|clflushopt|clwb)/) return toupper(name)
  return ""
}
BEGIN {
  FS = "\t"
  allowed["avx"] = " SSE3 SSE4 AVX "
  allowed["avx2"] = " SSE3 SSE4 AVX AVX2 "
}
/^<.*>:$/ {
  symbol = $0
  unit = symbol ~ /[^A-Za-z0-9_]avx2::/ ? "avx2" : symbol ~ /[^A-Za-z0-9_]avx::/ ? "avx" : "baseline"
  ++functions[unit]
  next
}
NF >= 3 {
  bytes = $2
  sub(/^((2e|36|3e|26|64|65|66|67|f0|f2|f3) )*(4[0-9a-f] )?/, "", bytes)
  operands = $3
  sub(/^((rep|repz|repnz|lock|bnd|notrack|data16|addr32|cs|ds|es|fs|gs|ss|rex(\.[WRXB]+)?) +)*/, "", operands)
  name = operands
  sub(/ .*/, "", name)
  sub(/^[^ ]* */, "", operands)
  found = extension(bytes, name, operands)
  if (found != "" && index(allowed[unit], " " found " ") == 0) {
    ++findings
    if (!((symbol, found) in told)) print found " (" name ") in " (unit == "baseline" ? "" : unit " ") symbol
    told[symbol, found] = 1
  }
}
END {
  if (functions["avx"] == 0 || functions["avx2"] == 0) {
    print "no vector units to be seen: is the library stripped?"
    exit 1
  }
  printf "%d functions for every processor, %d for AVX, %d for AVX2: %d instructions don't belong\n",
         functions["baseline"], functions["avx"], functions["avx2"], findings
  exit findings > 0
}
AWK

failed=false
objdump --disassemble --demangle --no-addresses --insn-width=16 "$library" | awk "$program" || failed=true

if (($# > 0)); then
  shared=$(nm --demangle --defined-only "$@" | grep -E '^[0-9a-f]+ [WVui] ' | grep -vE '[^A-Za-z0-9_]avx2?::' || true)
  if [[ -n $shared ]]; then
    printf 'vector units share with other code:\n%s\n' "$shared"
    failed=true
  fi
fi
if $failed; then exit 1; fi
