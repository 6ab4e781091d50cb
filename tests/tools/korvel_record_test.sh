#!/usr/bin/env bash
# Tests what the korvel command records, by the eyes of another program. Argument: path of the command.
set -euo pipefail

# shellcheck source-path=SCRIPTDIR source=tool_checks.sh
source "$(dirname "$0")/tool_checks.sh"

# What ffprobe finds: "codec,width,height,frames per second,frames"; it decodes them all.
video_facts() {  # video_facts FILE
  ffprobe -v error -count_frames -select_streams v:0 \
    -show_entries stream=codec_name,width,height,r_frame_rate,nb_read_frames -of csv=p=0 "$1"
}

is_video() {  # is_video FILE WIDTH HEIGHT FRAMES_PER_SECOND FRAMES
  [ "$(video_facts "$1")" = "mjpeg,$2,$3,$4/1,$5" ]
}

# The first pixel of each frame is near these values.
begins_with() {  # begins_with FILE RED GREEN BLUE
  ffmpeg -v error -nostdin -i "$1" -vsync passthrough -vf format=rgb24,crop=1:1:0:0 -f rawvideo - |
    od -An -v -tu1 -w3 | awk -v r="$2" -v g="$3" -v b="$4" '
      function far(x, y) { return x - y > 4 || y - x > 4 }
      far($1, r) || far($2, g) || far($3, b) { wrong = 1 }
      END { exit wrong || NR == 0 }'
}

# How many frames the summary in the file out tells, in the order of its words.
counts() {
  sed -nE 's/^  frames +([0-9]+) appended, ([0-9]+) written, ([0-9]+) dropped$/\1 \2 \3/p' out
}

took_at_least() {  # took_at_least SECONDS
  awk -v least="$1" '$1 == "took" {took = $2} END {exit !(took >= least)}' out
}

file_of() {  # file_of COUNT BYTE...: the bytes, given in octal, COUNT times over
  local count=$1 bytes
  shift
  printf -v bytes '\\%s' "$@"
  # shellcheck disable=SC2059  # the format holds the bytes
  for ((i = 0; i < count; ++i)); do printf "$bytes"; done
}

# --- the simulated camera, in each format

readonly size=(--size 64x48)
readonly pixels=$((64 * 48))

mapfile -t formats < <(korvel formats | awk '/^0x/ {print $2}')
check "there are 49 formats" [ "${#formats[@]}" -eq 49 ]
for format in "${formats[@]}"; do
  case $format in
    Mono*) recorded=Mono8 ;;
    Bayer* | BGRa*) recorded=BGRa8 ;;
    RGBa*) recorded=RGBa8 ;;
    RGB*) recorded=RGB8 ;;
    *) recorded=BGR8 ;;
  esac
  succeeds record "$format.avi" --format "$format" "${size[@]}" --frames 3 --as-fast-as-possible
  check "$format is recorded as $recorded" grep -qF "wrote $format.avi: 64 x 48, $recorded" out
  check "a video of $format is whole" is_video "$format.avi" 64 48 25 3
done

# Without conversion and with one, and whichever colour comes first, one scene has one look. Mosaics differ a little at
# edges; exchanged colours would differ by some dozens.
for format in RGB8 BGR8 RGBa8 BGRa8 RGB12 BGRa10 BGR10p32 BayerRG8 BayerGR12p BayerGB10g40Qrv BayerBG10; do
  korvel record look.avi --format "$format" --size 640x480 --frames 3 --as-fast-as-possible >out
  ffmpeg -v error -nostdin -i look.avi -vf 'select=eq(n\,2),scale=6:4:flags=area' -f rawvideo -pix_fmt rgb24 - >"look_$format"
  rm look.avi
  difference=$({ cmp -l look_RGB8 "look_$format" || true; } | awk '
    function octal(x) { return int(x / 100) * 64 + int(x / 10) % 10 * 8 + x % 10 }
    { d = octal($2) - octal($3); if (d < 0) d = -d; if (d > most) most = d } END { print most + 0 }')
  check "a video of $format has the colours of the scene, within $difference" [ "$difference" -le 8 ]
done

succeeds record moving.avi "${size[@]}" --frames 8 --as-fast-as-possible
check "no two frames of the camera are alike" \
  [ "$(ffmpeg -v error -nostdin -i moving.avi -f framemd5 - | grep -v '^#' | cut -d, -f6 | sort -u | wc -l)" -eq 8 ]

run record paced.avi "${size[@]}" --fps 10 --frames 6
check "the camera ends well" [ "$code" -eq 0 ]
check "six frames at 10 a second take half a second" \
  took_at_least 0.5
check "--fps is the video's" is_video paced.avi 64 48 10 6
check "the play time is told" grep -qE '^  play time +0\.60 s at 10 fps$' out
check "the size of the file is told" grep -qE "^  file size +$(stat -c %s paced.avi) bytes$" out
run record default.avi --fps 2
check "the camera is recorded for five seconds" is_video default.avi 1280 720 2 10

succeeds record least.avi "${size[@]}" --frames 3 --as-fast-as-possible --quality 5
succeeds record most.avi "${size[@]}" --frames 3 --as-fast-as-possible --quality 100
check "--quality sets the size of the file" [ "$(stat -c %s least.avi)" -lt "$(stat -c %s most.avi)" ]

# --- drops

succeeds record waiting.avi --size 640x480 --frames 60 --queue 1 --as-fast-as-possible
check "a camera that waits loses nothing" [ "$(counts)" = "60 60 0" ]
check "a camera that waits leaves all frames" is_video waiting.avi 640 480 25 60

run record hasty.avi --format Mono8 --size 1920x1080 --fps 1000 --frames 40 --queue 1 --quality 100
read -r appended written dropped <<<"$(counts)"
check "drops are no failure" [ "$code" -eq 0 ]
check "each frame is written or dropped" [ "$appended" -eq 40 ] && [ $((written + dropped)) -eq 40 ]
check "the frames in the file are those that were written" is_video hasty.avi 1920 1080 1000 "$written"
if [[ $dropped -gt 0 ]]; then
  check "drops are told" grep -qF "korvel: note: $dropped of 40 frames found the queue full and were dropped" err
else
  check "no drops are told where none were" [ "$(grep -c 'queue full' err)" -eq 0 ]
fi

code=0
(
  trap '' XFSZ  # what is beyond the limit then fails like a full disk
  ulimit -f 200
  exec korvel record small_disk.avi --size 640x480 --frames 50 --as-fast-as-possible >out 2>err
) || code=$?
read -r appended written dropped <<<"$(counts)"
check "frames that can't be written are a failure" [ "$code" -eq 1 ]
check "frames that can't be written are counted" [ "$appended" -eq 50 ] && [ $((written + dropped)) -eq 50 ]
check "frames that can't be written are told" \
  grep -qF "$dropped of 50 frames could not be compressed or written to 'small_disk.avi'" err
check "frames that could be written are there" [ "$written" -gt 0 ] && is_video small_disk.avi 640 480 25 "$written"

run record tiny.avi --format Mono8 --size 16x16 --frames 2 --quality 100 --as-fast-as-possible
check "frames that compression makes larger are a failure" [ "$code" -eq 1 ]
check "what makes frames smaller is told" grep -qF -- "choose a lower --quality" err

# --- files

file_of $pixels 310 036 074 >a.bin  # 200, 30, 60
korvel convert a.bin a.png --format RGB8 "${size[@]}" >out
korvel convert a.bin b.raw --format RGB8 "${size[@]}" >out
file_of $pixels 144 >grey.bin
korvel convert grey.bin grey.png --format Mono8 "${size[@]}" >out
for ((line = 0; line < 24; ++line)); do
  file_of 32 310 036  # red and green
  file_of 32 036 074  # green and blue
done >mosaic.bin

succeeds record files.avi a.png b.raw a.png --fps 2
check "files are recorded in turn, once each" is_video files.avi 64 48 2 3
check "files are recorded in their colours" begins_with files.avi 200 30 60
check "the summary of files tells their number" [ "$(counts)" = "3 3 0" ]
succeeds record mixed.avi a.png grey.png
check "grey files follow those in colour" is_video mixed.avi 64 48 25 2
succeeds record again.avi a.png b.raw --frames 7
check "with more frames than files they are taken in turn" is_video again.avi 64 48 25 7
succeeds record fewer.avi a.png b.raw --frames 1
check "with less frames than files the first are taken" is_video fewer.avi 64 48 25 1
succeeds record bgr.avi a.bin --format BGR8 "${size[@]}"
check "bare pixels are recorded in their order" begins_with bgr.avi 60 30 200
succeeds record mosaic.avi mosaic.bin mosaic.bin --format BayerRG8 "${size[@]}"
check "a mosaic is recorded in colours" begins_with mosaic.avi 200 30 60
succeeds record grey.avi grey.png
check "grey files are recorded" begins_with grey.avi 100 100 100
succeeds record skipped.avi a.bin --format RGB8 --size 64x32 --skip $((64 * 16 * 3))
check "--skip skips" is_video skipped.avi 64 32 25 1
run record behind.avi a.bin a.bin --format RGB8 --size 64x32 --frames 6
check "bytes behind the pixels are told once for each file" [ "$(grep -c 'bytes behind the pixels' err)" -eq 2 ]
succeeds record many.AVI a.bin --format RGB8 "${size[@]}" --frames 500 --queue 1
check "files wait for the encoder" is_video many.AVI 64 48 25 500

# --- several files

# The frames of the files, decoded: those of the first, those of the second, and so on.
decoded() {  # decoded FILE...
  local file
  for file in "$@"; do
    ffmpeg -v error -nostdin -i "$file" -vsync passthrough -f framemd5 - | grep -v '^#' | cut -d, -f6
  done
}

split=("${size[@]}" --frames 200 --as-fast-as-possible)
succeeds record joined.avi "${split[@]}"
succeeds record parts.avi "${split[@]}" --split-at 100K
parts=(parts.avi parts-*.avi)
check "a recording is split into several files" [ "${#parts[@]}" -ge 3 ]
check "files are numbered from the second on" [ -f parts-0002.avi ] && [ -f parts-0003.avi ] && [ ! -e parts-0001.avi ]
check "no frame is lost between files, nor written twice" cmp -s <(decoded joined.avi) <(decoded parts.avi parts-*.avi)
check "the summary tells the sum of the files" [ "$(counts)" = "200 200 0" ]
check "the summary tells the size of all files" grep -qE \
  "^  file size +$(cat parts.avi parts-*.avi | wc -c) bytes in ${#parts[@]} files$" out
check "the summary names each file" [ "$(grep -c '^wrote parts' out)" -eq "${#parts[@]}" ]
for part in "${parts[@]}"; do
  check "$part is not larger than --split-at" [ "$(stat -c %s "$part")" -le $((100 * 1024)) ]
  if [[ $part != "${parts[-1]}" ]]; then
    check "$part is not much smaller" [ "$(stat -c %s "$part")" -ge $((80 * 1024)) ]
  fi
done

# Of frames that take a twentieth of the file's size once they are compressed, and nearly all of it before.
succeeds record large.avi --size 640x480 --frames 60 --as-fast-as-possible --split-at 1M
for part in large.avi large-*.avi; do
  check "$part is not larger than --split-at" [ "$(stat -c %s "$part")" -le $((1024 * 1024)) ]
done
check "files are filled as far as frames are likely to fit" [ "$(stat -c %s large.avi)" -ge $((800 * 1024)) ]

succeeds record single.avi "${size[@]}" --frames 12 --as-fast-as-possible --split-at 1
check "a file holds a frame, whatever --split-at" is_video single-0012.avi 64 48 25 1
check "there are as many files as frames then" [ "$(find . -name 'single*.avi' | wc -l)" -eq 12 ]
succeeds record unsplit.avi "${split[@]}" --split
check "--split alone leaves a short recording in one file" [ ! -e unsplit-0002.avi ] && cmp -s joined.avi unsplit.avi

succeeds record live.avi "${size[@]}" --fps 200 --frames 150 --split-at 100K
check "in real time no frame is lost between files" [ "$(counts)" = "150 150 0" ]
check "in real time all frames are in the files" \
  cmp -s <(decoded joined.avi | head -n 150) <(decoded live.avi live-*.avi)

code=0
timeout --preserve-status -s INT 2 bash -c \
  "exec korvel record early.avi --size 64x48 --fps 100 --frames 100000 --split-at 50K >out 2>err" || code=$?
read -r appended written dropped <<<"$(counts)"
check "Ctrl-C ends a recording in several files well" [ "$code" -eq 0 ] && [ "$written" -gt 0 ]
check "Ctrl-C leaves whole files" [ "$(decoded early.avi early-*.avi | wc -l)" -eq "$written" ]

succeeds record coloured.avi a.png grey.png a.png --split-at 1
check "all files have the format of the first frame" [ "$(grep -c '^wrote coloured.*, RGB8$' out)" -eq 3 ]

touch taken-0007.avi
fails 1 "'taken-0007.avi' is there already" record taken.avi "${split[@]}" --split
check "a name that is taken is told before the recording" [ ! -e taken.avi ]
touch taken-7.avi taken-0007.png "taken-000x.avi"
rm taken-0007.avi
succeeds record taken.avi "${split[@]}" --split
fails 1 "cannot read 'missing.png'" record x.avi a.png b.raw missing.png --split-at 1
fails 1 "--split-at: '5X' is not a number of bytes" record x.avi --split-at 5X
fails 1 "Give a size such as 500M, 2G or 700000." record x.avi --split-at 0
fails 1 "--split-at: '99999999999G' is not a number of bytes" record x.avi --split-at 99999999999G
check "what is recorded from files goes with all its files when it fails" [ ! -e x.avi ] && [ ! -e x-0002.avi ]

# --- for programs

succeeds record told.avi "${size[@]}" --frames 20 --as-fast-as-possible --progress-json
check "--progress-json prints lines of JSON alone" [ "$(grep -cvE \
  '^\{"files":1,"appended":[0-9]+,"written":[0-9]+,"queued":[0-9]+,"dropped":0\}$' out)" -eq 0 ]
check "--progress-json tells the end" [ "$(tail -n 1 out)" = \
  '{"files":1,"appended":20,"written":20,"queued":0,"dropped":0}' ]
check "--progress-json tells each frame" [ "$(wc -l <out)" -ge 20 ]
korvel record unread.avi "${size[@]}" --fps 200 --frames 4000 --progress-json 2>err | head -n 1 >out || true
check "a recording whose progress nobody reads any more ends early" [ "$(stat -c %s unread.avi)" -lt 2000000 ]
run repair-avi unread.avi x.avi
check "and leaves a whole file" grep -qF "is whole" out

# --- an early end

for signal in INT TERM; do
  code=0
  timeout --preserve-status -s $signal 2 bash -c \
    "exec korvel record stopped_$signal.avi --size 64x48 --frames 100000 >out 2>err" || code=$?
  read -r appended written dropped <<<"$(counts)"
  check "SIG$signal ends a recording well" [ "$code" -eq 0 ]
  check "SIG$signal ends a recording early" [ "$appended" -gt 0 ] && [ "$appended" -lt 100000 ]
  check "what was appended until SIG$signal is in the file" is_video stopped_$signal.avi 64 48 25 "$written"
done
code=0
# As for a program in the background.
timeout -s INT 1 bash -c \
  "trap '' INT; exec korvel record ignored.avi --size 64x48 --fps 10 --frames 20 >out 2>err" || true
check "a signal that is ignored stays ignored" is_video ignored.avi 64 48 10 20

# --- mistakes

fails 2 "OUT is required" record
fails 1 "'x.mp4' is no name for a video" record x.mp4
cp files.avi kept.avi
fails 1 "'kept.avi' is there already" record kept.avi a.png
check "a file that is there stays" cmp -s files.avi kept.avi
fails 1 "Choose a name in UTF-8, in a folder that exists" record missing/x.avi a.png
korvel simulate other.png --format RGB8 --size 72x48 >out
fails 1 "'other.png' has another size than 'a.png': 72 x 48, not 64 x 48" record x.avi a.png other.png
fails 1 "leave the file out, or record it to a video of its own" record x.avi a.png other.png
korvel simulate alpha.png --format RGBa8 "${size[@]}" >out
fails 1 "All frames of a video have the format of the first" record x.avi a.png alpha.png
fails 1 "cannot read 'missing.png'" record x.avi a.png missing.png
fails 2 "'a.bin' holds bare pixels, for which --format is required" record x.avi a.bin
fails 2 "--skip belongs to files of bare pixels; IN is required" record x.avi --skip 4
korvel simulate odd.png --format RGB8 --size 61x47 >out
fails 1 "'odd.png': a video can't be 61 x 47 pixels" record x.avi odd.png
fails 1 "56x47 would do" record x.avi odd.png
fails 1 "--size: a video can't be 70000 x 8 pixels" record x.avi --size 70000x8
fails 1 "65496x16 would do" record x.avi --size 70000x8
fails 1 "more pixels than a simulated sensor" record x.avi --size 100000x100000
fails 1 "Did you mean BayerRG12p" record x.avi --format BayerRG12P
fails 1 "--fps: '0' is not a number that can be used here" record x.avi --fps 0
fails 1 "Give a whole number from 1 to 1000." record x.avi --queue 1001
fails 1 "Give a whole number from 1 to 100." record x.avi --quality 101
fails 1 "--frames: '0' is not a number that can be used here" record x.avi --frames 0
check "no mistake leaves a video" [ ! -e x.avi ]

# --- on a terminal

if command -v script >/dev/null; then
  script -qec 'korvel record terminal.avi a.png b.raw' /dev/null >out </dev/null
  check "a terminal sees how far the recording is" \
    grep -qE 'recording \[#+\] 2 of 2: [0-2] written, [0-2] queued, 0 dropped' out
fi

ends_well
