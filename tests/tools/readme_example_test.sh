#!/usr/bin/env bash
# Tests that the C program in README compiles and makes a picture.
# Arguments: README, C compiler, include folder, library, demo program (which makes a frame), flags for the compiler.
set -euo pipefail

readme=$(realpath "$1")
compiler=$2
include=$(realpath "$3")
library=$(realpath "$4")
demo=$(realpath "$5")
shift 5
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"

# shellcheck disable=SC2016  # the backquotes are Markdown's
sed -n '/^```c$/,/^```$/{/^```/d;p}' "$readme" >frame.c
grep -q 'int main' frame.c || { echo "FAILED: README has no C program"; exit 1; }
"$compiler" -std=c99 -Wall -Wextra -Wpedantic -Werror "$@" -I "$include" frame.c "$library" \
  -Wl,-rpath,"$(dirname "$library")" -o frame

"$demo" . --seconds 0.01 --video-seconds 0.1 >/dev/null
./frame <frame_BayerRG12p_1920x1080.bin || { echo "FAILED: the program ends with $?"; exit 1; }
cmp frame.png high_quality.png || { echo "FAILED: the program's picture is not the demo's"; exit 1; }
if ./frame </dev/null; then echo "FAILED: no frame is no failure"; exit 1; fi
echo "all passed"
