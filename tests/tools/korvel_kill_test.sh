#!/usr/bin/env bash
# Kills recordings at random moments and repairs what they leave. Every frame that was counted as written has to come
# back, as it was recorded, to the last bit. Arguments: path of the command, and how many recordings to kill.
set -euo pipefail

readonly count=$2

# shellcheck source-path=SCRIPTDIR source=tool_checks.sh
source "$(dirname "$0")/tool_checks.sh"

# The camera waits for the encoder, so that each recording has the same frames, and takes about as long as the first.
readonly first_frame=244
recording=(--size 640x480 --frames 700 --queue 4 --as-fast-as-possible --progress-json)
now_ms() { echo $((${EPOCHREALTIME/[.,]/} / 1000)); }
start=$(now_ms)
korvel record whole.avi "${recording[@]}" >whole.json
readonly recording duration=$(($(now_ms) - start))

written_of() {  # written_of FILE: the count of the last line that was printed whole
  { grep -E '^\{.*\}$' "$1" || true; } | tail -n 1 | sed -E 's/.*"written":([0-9]+).*/\1/' | grep . || echo 0
}

check "the last count is that of all frames" [ "$(written_of whole.json)" -eq 700 ]
run repair-avi whole.avi none.avi
check "a recording that ended well is whole" grep -q "is whole: 700 frames" out

readonly seed=${KORVEL_SEED:-$$}
RANDOM=$seed
killed=0 whole=0 frames=0 most_uncounted=0 cut_off=0
while [[ $killed -lt $count ]]; do
  rm -f ./*.part cut.avi repaired.avi
  moment=$((RANDOM % duration))
  korvel record cut.avi "${recording[@]}" >counts.json &
  recorder=$!
  sleep "$((moment / 1000)).$(printf %03d $((moment % 1000)))"
  kill -KILL "$recorder" 2>/dev/null || true
  wait "$recorder" 2>/dev/null || true
  written=$(written_of counts.json)

  run repair-avi cut.avi repaired.avi
  if grep -q 'is whole' out; then
    whole=$((whole + 1))
    check "after $moment ms: a file is whole only when all frames are written" [ "$written" -eq 700 ]
    continue
  fi
  killed=$((killed + 1))
  if [[ $written -eq 0 && $code -eq 1 ]]; then continue; fi # nothing was recorded yet
  check "after $moment ms: a recording of $written frames is repaired" [ "$code" -eq 0 ]
  recovered=$(sed -nE 's/^  frames +([0-9]+) recovered$/\1/p' out)
  check "after $moment ms: $recovered frames come back of $written" [ "${recovered:-0}" -ge "$written" ]
  check "after $moment ms: nothing is skipped" [ "$(grep -c 'without a whole picture' out)" -eq 0 ]
  frames=$((frames + recovered))
  if [[ $((recovered - written)) -gt $most_uncounted ]]; then most_uncounted=$((recovered - written)); fi
  if grep -q 'whose rest was never written' out; then cut_off=$((cut_off + 1)); fi

  movi=$(od -An -tu4 -j 236 -N 4 repaired.avi)
  check "after $moment ms: the frames are those of a whole recording" \
    cmp -s -i $first_frame -n $((movi - 4)) repaired.avi whole.avi
  if command -v ffprobe >/dev/null; then
    check "after $moment ms: another program counts as many frames" [ "$(ffprobe -v error -count_frames \
      -select_streams v:0 -show_entries stream=nb_read_frames -of csv=p=0 repaired.avi)" = "$recovered" ]
    ffmpeg -v error -nostdin -i repaired.avi -f null - >decoded 2>&1 || echo "failed" >>decoded
    check "after $moment ms: another program decodes it without a complaint" [ ! -s decoded ]
  fi
  run repair-avi repaired.avi again.avi
  check "after $moment ms: what is repaired is whole" grep -qF "is whole: $recovered frames" out
done

echo "KORVEL_SEED=$seed: $killed recordings killed, $whole came to their end before; $frames frames came back, up to" \
  "$most_uncounted more than were counted; $cut_off had half a frame at the end"
check "frames came back" [ "$frames" -gt 0 ]
ends_well
