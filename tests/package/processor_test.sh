#!/usr/bin/env bash
# The installed library on a processor that qemu plays: it runs there, and its results are those of such a processor.
# Arguments: the build folder, the folder with the test programs, an empty folder to work in, the processor and the
# features of its record that decide over results: none, avx or avx2.
set -euo pipefail

readonly build=$1 programs=$2 work=$3 processor=$4 record=$5

rm -rf "$work"
mkdir -p "$work"
cmake --install "$build" --component runtime --prefix "$work" >/dev/null
lib=$(dirname "$(find "$work" -name 'libkorvel.so.?')")
readonly lib

fail() {
  echo "processor_test: $*" >&2
  exit 1
}

# qemu warns of what it lacks of a processor; the library asks for none of that.
on_processor() {
  qemu-x86_64 -cpu "$processor" -E LD_LIBRARY_PATH="$lib" "$@" 2> >(grep -v "TCG doesn't support" >&2)
}

loaded=$(on_processor -E LD_TRACE_LOADED_OBJECTS=1 "$programs/korvel_api_tests")
[[ $loaded == *"=> $lib/libkorvel.so."* ]] || fail "not the installed library: $loaded"

# The record is the processor's.
on_processor "$programs/korvel_tests" --gtest_brief=1 --gtest_filter='ProcessorFeatures.*:InstructionSet.*'

# Exported functions against plain models, which take the processor's features into account. Left out is what hardly
# depends on them and takes long.
long='VideoWriterApi.*:ImageReaderApi*:*EveryReadFormat*:ImageDestruct.*:*ImageTransformerSweep.UndoesItself/*'
long+=':GammaCorrectorApi.DoesWhatTheModelDoesOnEveryFormat'
on_processor -E KORVEL_TEST_PROCESSOR="$record" "$programs/korvel_api_tests" --gtest_brief=1 --gtest_filter="-$long"
