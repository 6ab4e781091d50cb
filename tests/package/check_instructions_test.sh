#!/usr/bin/env bash
# scripts/check-instructions.sh finds what doesn't belong. Arguments: the source folder, an empty folder to work in.
set -euo pipefail

readonly source=$1 work=$2

rm -rf "$work"
mkdir -p "$work"

fail() {
  echo "check_instructions_test: $*" >&2
  exit 1
}

# Assembles functions and checks them: check NAMESPACE INSTRUCTION [NAMESPACE INSTRUCTION]... What the namespaces avx and
# avx2 need to be seen is always there. Prints what the script says.
check() {
  local -i count=0
  {
    printf '%s\n' '_ZN3avx6kernelEv: vaddps %ymm0, %ymm1, %ymm2' '_ZN4avx26kernelEv: vpaddd %ymm0, %ymm1, %ymm2'
    while (($# > 0)); do
      printf '_ZN%d%s9function%dEv: %s\n' ${#1} "$1" $((++count)) "$2"
      shift 2
    done
  } >"$work/functions.s"
  as -o "$work/functions.o" "$work/functions.s"
  "$source/scripts/check-instructions.sh" "$work/functions.o" 2>&1
}

# Fails unless an instruction in a namespace is found, and as that of an extension: finds NAMESPACE EXTENSION INSTRUCTION
finds() {
  local said
  if said=$(check "$1" "$3"); then fail "'$3' in $1 passed"; fi
  [[ $said =~ ^"$2 (" && $said == *"$1::function1()"*': 1 instructions '* ]] || fail "'$3' in $1 gives: $said"
}

# Fails if an instruction in a namespace is found: passes NAMESPACE INSTRUCTION
passes() {
  local said
  said=$(check "$@") || fail "'$2' in $1 gives: $said"
}

for namespace in plain img; do
  finds $namespace AVX 'vaddps %xmm0, %xmm1, %xmm2'
  finds $namespace AVX 'vzeroupper'
  finds $namespace AVX2 'vpaddd %ymm0, %ymm1, %ymm2'
  finds $namespace AVX-512 'vpaddd %zmm0, %zmm1, %zmm2'
  finds $namespace SSE3 'haddps %xmm0, %xmm1'
  finds $namespace SSE4 'pshufb %xmm8, %xmm9'
  finds $namespace SSE4 'pmulld (%r8), %xmm1'
  finds $namespace POPCNT 'popcnt %rax, %rbx'
  finds $namespace LZCNT 'lzcnt %eax, %ebx'
  finds $namespace BMI1 'andn %eax, %ebx, %ecx'
  finds $namespace BMI2 'shlx %rax, %rbx, %rcx'
  finds $namespace MOVBE 'movbe (%rax), %ebx'
  finds $namespace AES "pclmulqdq \$0, %xmm0, %xmm1"
done
for namespace in avx avx2; do
  finds $namespace FMA 'vfmadd231ps %ymm0, %ymm1, %ymm2'
  finds $namespace FMA 'vfnmsub132sd %xmm0, %xmm1, %xmm2'
  finds $namespace F16C 'vcvtph2ps %xmm0, %ymm0'
  finds $namespace BMI1 'blsr %eax, %ebx'
  finds $namespace BMI2 'mulx %rax, %rbx, %rcx'
  finds $namespace LZCNT 'lzcnt %eax, %ebx'
  finds $namespace MOVBE 'movbe (%rax), %ebx'
  finds $namespace AVX-512 'vpaddd %zmm0, %zmm1, %zmm2'
  finds $namespace AVX-512 'vpaddd %xmm16, %xmm1, %xmm2'
  finds $namespace AVX-512 'kmovw %k1, %eax'
  passes $namespace 'pshufb %xmm0, %xmm1'
  passes $namespace 'vpshufb %xmm0, %xmm1, %xmm2'
  passes $namespace 'vptest %ymm0, %ymm1'
  passes $namespace 'vbroadcastss (%rax), %ymm1'
done
for instruction in 'vpshufb %ymm0, %ymm1, %ymm2' "vpermq \$1, %ymm0, %ymm1" 'vpbroadcastb %xmm0, %xmm1' \
  "vextracti128 \$1, %ymm0, %xmm1" 'vbroadcastss %xmm0, %xmm1' 'vpsllvd %xmm0, %xmm1, %xmm2'; do
  finds avx AVX2 "$instruction"
  passes avx2 "$instruction"
done
passes plain 'paddd %xmm8, %xmm9'
passes plain 'lock cmpxchg %rax, (%rbx)'
passes plain 'rep bsf %eax, %ebx' # which prints as tzcnt

# One finding isn't hidden by another, nor by a namespace that only looks alike.
if said=$(check plain 'vaddps %xmm0, %xmm1, %xmm2' avx 'popcnt %rax, %rbx' myavx 'vzeroupper'); then
  fail "three planted instructions passed"
fi
[[ $(grep -c '::function[123]()' <<<"$said") == 3 && $said == *': 3 instructions '* ]] || fail "of three: $said"

# A stripped library can't be judged.
check plain nop >/dev/null || fail "nothing planted, and it failed"
strip "$work/functions.o"
if "$source/scripts/check-instructions.sh" "$work/functions.o" >/dev/null; then fail "a stripped file passed"; fi

# Of objects of vector units, functions that the linker merges with their namesakes elsewhere.
check plain nop >/dev/null
cp "$work/functions.o" "$work/library.o"
printf '%s\n' '.weak _ZN4avx26sharedEv' '_ZN4avx26sharedEv: ret' | as -o "$work/unit.o"
"$source/scripts/check-instructions.sh" "$work/library.o" "$work/unit.o" >/dev/null || fail "a unit's own failed"
printf '%s\n' '.weak _ZSt3minv' '_ZSt3minv: ret' | as -o "$work/unit.o"
if said=$("$source/scripts/check-instructions.sh" "$work/library.o" "$work/unit.o"); then
  fail "a template of the standard library passed"
fi
[[ $said == *'std::min'* ]] || fail "the shared function isn't named: $said"
echo "check_instructions_test: ok"
