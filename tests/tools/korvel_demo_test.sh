#!/usr/bin/env bash
# Tests the demo program: it ends well, tells the speed of each mode, records a video and names files that are there.
# Argument: path of the program.
set -euo pipefail

demo=$(realpath "$1")
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"

fail() {
  echo "FAILED: $*"
  cat out err
  exit 1
}

"$demo" new/folder --seconds 0.01 --video-seconds 0.2 >out 2>err || fail "the demo ends with $?"
[[ ! -s err ]] || fail "the demo prints an error"
for mode in 1 2 3; do
  grep -qE "^mode $mode +[a-z_]+ +[0-9.]+ frames per second$" out || fail "the speed of mode $mode is missing"
done

mapfile -t pictures < <(sed -n 's/^ *\(.*\.png\)$/\1/p' out)
[[ ${#pictures[@]} -eq 3 ]] || fail "three pictures are named, not ${#pictures[@]}"
for picture in "${pictures[@]}"; do
  # Signature, then 1920 x 1080 at 8 bits with colour and alpha.
  header=$(od -An -v -tx1 -N 26 "$picture" | tr -d ' \n')
  [[ $header == 89504e470d0a1a0a????????4948445200000780000004380806 ]] || fail "$picture begins with $header"
done
frame=$(sed -n 's/^ *\(.*\.bin\)$/\1/p' out)
[[ $(stat -c %s "$frame") -eq $((1920 * 1080 * 3 / 2)) ]] || fail "the frame has a wrong size"

recorded=$(sed -n 's/^The same camera recorded at 25 frames per second: \([0-9]*\) frames written, \([0-9]*\) dropped$/\1 \2/p' out)
read -r written dropped <<<"$recorded" || fail "the video's frames are not told"
[[ $((written + dropped)) -eq 5 ]] || fail "a fifth of a second has 5 frames, not $written and $dropped"
video=$(sed -n 's/^ *\(.*\.avi\)$/\1/p' out)
facts=$(ffprobe -v error -count_frames -show_entries stream=codec_name,width,height,nb_read_frames -of csv=p=0 "$video")
[[ $facts == "mjpeg,1920,1080,$written" ]] || fail "the video is $facts"
"$demo" new/folder --seconds 0.01 --video-seconds 0.04 >out 2>err || fail "a second run ends with $?"
[[ $(ffprobe -v error -show_entries stream=nb_frames -of csv=p=0 "$video") -le 1 ]] || fail "the old video stays"

touch file
if "$demo" file/folder --seconds 0.01 >out 2>err; then fail "a folder that can't be made is no failure"; fi
grep -q "cannot make the folder" err || fail "a folder that can't be made is not told"
echo "all passed"
