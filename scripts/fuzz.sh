#!/usr/bin/env bash
# Fuzzes libkorvel, from nothing: installs what is missing, builds the fuzz preset and runs its targets over generated
# seeds and whatever libFuzzer makes of them.
set -euo pipefail

usage() {
  cat <<'HELP'
Usage: scripts/fuzz.sh [--target NAME]... [SECONDS]
       scripts/fuzz.sh [--target NAME]... --valgrind

Runs every fuzz target for SECONDS, 600 by default, two at a time, and prints what each of them did. Inputs that reached
something new are kept in build/fuzz/corpus for the next run. A finding makes the script fail; it lies in
build/fuzz/findings, and the script tells how to run it again. Once it is understood, it belongs in
fuzz/findings/<target> under a telling name, which makes it a test.

  --target NAME  only this target: read_bmp, read_png, read_jpeg, read_raw, read_avi, repair_avi, read_as_format,
                 round_trip or exported_functions; may be given several times
  --valgrind     instead of looking for new inputs, run the seeds, all the cut ones too, under valgrind, which sees into
                 the codecs, while the sanitizers don't; takes some minutes
  --help         this text
HELP
}

fail_usage() {
  echo "fuzz: $1" >&2
  usage >&2
  exit 2
}

seconds=600
valgrind=false
targets=()
while (($# > 0)); do
  case "$1" in
    --target)
      if (($# < 2)); then fail_usage "--target wants a name"; fi
      targets+=("$2")
      shift
      ;;
    --valgrind) valgrind=true ;;
    --help | -h)
      usage
      exit 0
      ;;
    *)
      if [[ ! $1 =~ ^[1-9][0-9]*$ ]]; then fail_usage "unknown argument '$1'"; fi
      seconds=$1
      ;;
  esac
  shift
done
if ((${#targets[@]} == 0)); then
  targets=(read_bmp read_png read_jpeg read_raw read_avi repair_avi read_as_format round_trip exported_functions)
fi
readonly seconds valgrind targets

cd "$(dirname "${BASH_SOURCE[0]}")/.."
scripts/install-dependencies.sh --fuzz
if $valgrind; then
  preset=dev
else
  preset=fuzz
fi
readonly preset root=$PWD/build/$preset
cmake --preset "$preset"
cmake --build --preset "$preset" --target korvel_fuzzers --parallel "$(nproc)"

# The targets write a file for each input, which is fast only in memory.
if [[ -d /dev/shm ]]; then
  TMPDIR=$(mktemp -d /dev/shm/korvel_fuzz_XXXXXX)
else
  TMPDIR=$(mktemp -d)
fi
export TMPDIR
trap 'rm -rf "$TMPDIR"' EXIT

readonly programs=$root/fuzz logs=$root/fuzz-logs
mkdir -p "$logs"

run_target() {
  local target=$1
  local seeds=$root/seeds/$target corpus=$root/corpus/$target findings=$root/findings/$target
  rm -rf "$seeds"
  mkdir -p "$corpus" "$findings" "$root/words"
  "$programs/make_seeds" "$target" "$seeds" "$root/words/$target"
  local words=()
  if [[ -s $root/words/$target ]]; then words=(-dict="$root/words/$target"); fi
  # Blocks of memory stay within the bound that the targets set, and what codecs take beside it.
  "$programs/fuzz_$target" -max_total_time="$seconds" -timeout=25 -rss_limit_mb=2048 -malloc_limit_mb=128 \
    -use_value_profile=1 -print_final_stats=1 "${words[@]}" -artifact_prefix="$findings/" "$corpus" "$seeds"
}

run_under_valgrind() {
  # The replay programs have a malloc of their own.
  valgrind --quiet --soname-synonyms=somalloc=NONE --error-exitcode=1 --leak-check=full \
    --errors-for-leak-kinds=definite "$programs/replay_$1"
}

run() {
  if $valgrind; then
    run_under_valgrind "$1"
  else
    run_target "$1"
  fi
}

# Two at a time. A target that fails leaves a file, since the exit codes of background jobs come in any order.
rm -f "$logs"/*.failed
for target in "${targets[@]}"; do
  while (($(jobs -rp | wc -l) >= 2)); do wait -n || true; done
  echo "fuzz: $target"
  { run "$target" >"$logs/$target.log" 2>&1 || touch "$logs/$target.failed"; } &
done
wait

stat_of() {
  sed -n "s/^stat::$2: *//p" "$logs/$1.log"
}

status=0
echo
for target in "${targets[@]}"; do
  if [[ -e $logs/$target.failed ]]; then
    status=1
    printf '%-20s FAILED, see %s\n' "$target" "$logs/$target.log"
    input=$(sed -n 's/.*Test unit written to //p' "$logs/$target.log" | tail -n 1)
    if [[ -n $input ]]; then printf '%-20s run it again: %s %s\n' '' "$programs/replay_$target" "$input"; fi
  elif $valgrind; then
    printf '%-20s %s\n' "$target" "$(tail -n 1 "$logs/$target.log")"
  else
    printf '%-20s %s inputs in %s s, %s new kept, %s MiB\n' "$target" "$(stat_of "$target" number_of_executed_units)" \
      "$seconds" "$(stat_of "$target" new_units_added)" "$(stat_of "$target" peak_rss_mb)"
  fi
done
exit "$status"
