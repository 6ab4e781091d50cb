#!/usr/bin/env bash
# Tests 'korvel repair-avi' as its user meets it. Argument: path of the command.
set -euo pipefail

# shellcheck source-path=SCRIPTDIR source=tool_checks.sh
source "$(dirname "$0")/tool_checks.sh"

korvel record whole.avi --size 64x48 --fps 30 --frames 200 --as-fast-as-possible >out
bytes=$(stat -c %s whole.avi)
# The index goes, with half a frame; what headers tell is not true any more.
head -c $((bytes - 200 * 16 - 8 - 1000)) whole.avi >cut.avi
cp cut.avi kept.avi

succeeds repair-avi cut.avi repaired.avi
check "the frames are told" grep -qE '^  frames +199 recovered$' out
check "the size is told" grep -qF 'wrote repaired.avi: 64 x 48' out
check "the play time is told" grep -qE '^  play time +6.63 s at 30 fps$' out
check "a frame that is cut off is told" grep -qE '^  left out +[0-9]+ bytes of the last frame, whose rest was never' out
check "nothing else is left out" [ "$(grep -c 'left out' out)" -eq 1 ]
check "the recording stays as it is" cmp -s cut.avi kept.avi
check "no other file is left" [ "$(find . -name 'repaired*' | wc -l)" -eq 1 ]
check "another program finds the frames" [ "$(ffprobe -v error -count_frames -select_streams v:0 -show_entries \
  stream=codec_name,width,height,r_frame_rate,nb_read_frames -of csv=p=0 repaired.avi)" = mjpeg,64,48,30/1,199 ]

head -c $((bytes - 100)) whole.avi >closing.avi
succeeds repair-avi closing.avi closed.avi
check "a recording that died while it was closed becomes what it was to be" cmp -s closed.avi whole.avi

succeeds repair-avi whole.avi none.avi
check "a whole file is told" grep -qF "'whole.avi' is whole: 200 frames, all in its index; none.avi was not written" out
check "a whole file is not copied" [ ! -e none.avi ] && [ ! -e none.avi.part ]

{ head -c 20000 cut.avi; head -c 5000 /dev/zero; tail -c +25001 cut.avi; } >damaged.avi
succeeds repair-avi damaged.avi mended.avi
check "places that are damaged are told" grep -qE \
  '^  left out +[0-9]+ bytes in 1 place without a whole picture, the first at byte [0-9]+$' out
check "a file with a damaged place is mended" \
  [ "$(ffmpeg -v error -nostdin -i mended.avi -f null - 2>&1 | wc -l)" -eq 0 ]

tail -c +1000 cut.avi >headless.avi
fails 1 "the headers of 'headless.avi' are damaged and don't tell the frames per second" repair-avi headless.avi x.avi
fails 1 "Give them, such as --fps 25." repair-avi headless.avi x.avi
succeeds repair-avi headless.avi headed.avi --fps 50
check "--fps stands in for headers" grep -qE ' at 50 fps$' out
succeeds repair-avi cut.avi faster.avi --fps 60
check "--fps goes before headers" grep -qE ' at 60 fps$' out

# --- mistakes

fails 2 "IN is required" repair-avi
fails 2 "OUT is required" repair-avi cut.avi
fails 1 "cannot read 'missing.avi'" repair-avi missing.avi x.avi
fails 1 "cannot read '.'" repair-avi . x.avi
head -c 252 whole.avi >empty.avi
fails 1 "'empty.avi' holds no whole frame of a video" repair-avi empty.avi x.avi
fails 1 "'repaired.avi' is there already" repair-avi cut.avi repaired.avi
fails 1 "'cut.avi' is the input itself" repair-avi cut.avi cut.avi
check "the input stays" cmp -s cut.avi kept.avi
fails 1 "'x.mp4' is no name for a video" repair-avi cut.avi x.mp4
fails 1 "cannot write 'missing/x.avi'" repair-avi cut.avi missing/x.avi
fails 1 "--fps: '0' is not a number that can be used here" repair-avi cut.avi x.avi --fps 0
touch x.avi.part
fails 1 "'x.avi.part' is there already" repair-avi cut.avi x.avi
rm x.avi.part
code=0
(
  trap '' XFSZ # what is beyond the limit then fails like a full disk
  ulimit -f 100
  exec korvel repair-avi cut.avi x.avi >out 2>err
) || code=$?
check "a disk that gets full is a failure" [ "$code" -eq 1 ] && grep -qF "cannot write 'x.avi'" err
check "no mistake leaves a file" [ ! -e x.avi ] && [ ! -e x.avi.part ]

ends_well
