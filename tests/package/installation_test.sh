#!/usr/bin/env bash
# Installs the library from a build, moves the installation, and uses it as an application does: with find_package and
# with pkg-config. Arguments: the build folder, the source folder, an empty folder to work in.
set -euo pipefail

readonly build=$1 source=$2 work=$3

rm -rf "$work"
mkdir -p "$work"
cmake --install "$build" --prefix "$work/first" >/dev/null
mv "$work/first" "$work/a prefix of blanks"
readonly prefix="$work/a prefix of blanks"

fail() {
  echo "installation_test: $*" >&2
  exit 1
}

# A frame of 32 by 24 pixels of 12p, all of the value 0x333.
head -c $((32 * 24 * 12 / 8)) /dev/zero | tr '\0' '\063' >"$work/frame.bin"

# CMake, in a project that asks for warnings of its own.
cmake -S "$source/examples" -B "$work/examples" -D "CMAKE_PREFIX_PATH=$prefix" -D CMAKE_BUILD_TYPE=Release \
  -D CMAKE_C_FLAGS=-Wall\ -Wextra\ -Werror -D CMAKE_CXX_FLAGS=-Wall\ -Wextra\ -Werror >/dev/null
cmake --build "$work/examples" >"$work/examples.log" || fail "$(cat "$work/examples.log")"
"$work/examples/frame_to_png_c" "$work/frame.bin" 32 24 "$work/cmake.png"
pngcheck -q "$work/cmake.png" || fail "no PNG file by way of CMake"

readonly examples=$work/examples
LC_ALL=C

# Fails unless what an example prints matches a pattern: expect PATTERN PROGRAM ARGUMENT...
expect() {
  local pattern=$1 output
  output=$("$examples/$2" "${@:3}" 2>&1) || fail "$2: $output"
  [[ $output =~ $pattern ]] || fail "$2 prints: $output"
}

# Writes a RAW file of 32 by 24 pixels of 8 bits: raw8 FILE FORMAT-BYTES VALUE [X Y]. The pixel at X, Y is 200.
raw8() {
  local file=$1 format=$2 value=$3 zeros='\x00\x00\x00\x00\x00\x00'
  printf '%b' "$format" '\x00\x03' "$zeros" '\x20\x00' "$zeros" '\x18\x00' "$zeros" >"$file"
  head -c $((32 * 24)) /dev/zero | tr '\0' "\\$value" >>"$file"
  if (($# == 5)); then
    printf '\310' | dd of="$file" bs=1 seek=$((28 + $5 * 32 + $4)) conv=notrunc status=none
  fi
}
readonly mono8='\x01\x00\x08\x01' bayer_rg8='\x09\x00\x08\x01'

"$examples/frame_to_png" "$work/frame.bin" 32 24 "$work/cpp.png"
cmp "$work/cmake.png" "$work/cpp.png" || fail "C and C++ make different pictures"

expect '^5 frames of 64 by 48: median' frame_loop 64 48 5

# Grey of 64 becomes 115, 76, 138 by the gains, 124, 55.8, 165 by the matrix, which processors round differently, and so
# 162, 97 or 98, 194 by gamma.
raw8 "$work/grey.raw" "$bayer_rg8" 100
"$examples/corrections_in_place" "$work/grey.raw" "$work/corrected.png"
expect '0: mean 162.00, from 162 to 162.*1: mean 9[78].[0-9]*, from .*2: mean 194.00, from 194 to 194' \
  histogram "$work/corrected.png"

# Built only where its library for JSON is. A pixel that is hot in one of three dark frames is noise.
if [[ -x $examples/hot_pixels ]]; then
  raw8 "$work/dark1.raw" "$mono8" 0 7 5
  raw8 "$work/dark2.raw" "$mono8" 0 7 5
  raw8 "$work/dark3.raw" "$mono8" 0 20 10
  expect '^1 hot pixels' hot_pixels learn "$work/list.json" "$work/dark1.raw" "$work/dark2.raw" "$work/dark3.raw"
  raw8 "$work/light.raw" "$mono8" 62 7 5
  "$examples/hot_pixels" correct "$work/list.json" "$work/light.raw" "$work/light.png"
  expect 'mean 50.00, from 50 to 50' histogram "$work/light.png"
fi

expect 'written 10, dropped 0, queued 0' recording "$work/recording.avi" 10
[[ $(head -c 4 "$work/recording.avi") == RIFF ]] || fail "no AVI file"

expect 'Error: 1, .*Io: 3, .*QueueFull: 11, ' errors_c "$work/errors.avi"
(($("$examples/errors_c" "$work/errors2.avi" | grep -c '^[A-Za-z]*: [0-9]*, .') == 10)) || fail "an error is missing"

if [[ -x $examples/live_camera ]]; then
  expect '^Mono8, mean [0-9.]*.Mono8, mean' live_camera 2 "$work/live.png" Fake_1
  pngcheck -q "$work/live.png" || fail "no PNG file of the live camera"
fi

# Another major version is not taken.
mkdir "$work/other"
printf '%s\n' 'cmake_minimum_required(VERSION 3.16)' 'project(other C)' 'find_package(korvel 2 REQUIRED)' \
  >"$work/other/CMakeLists.txt"
if cmake -S "$work/other" -B "$work/other/build" -D "CMAKE_PREFIX_PATH=$prefix" >/dev/null 2>&1; then
  fail "find_package took another major version"
fi

# pkg-config, as a file that moved with its prefix. Blanks in its output are escaped for a shell.
pc=$(find "$prefix" -name korvel.pc)
[[ -n $pc ]] || fail "korvel.pc is not installed"
flags=$(PKG_CONFIG_PATH=$(dirname "$pc") pkg-config --cflags --libs korvel)
lib=$(dirname "$(dirname "$pc")")
eval "cc -std=c99 -Wall -Wextra -Wpedantic -Werror -o '$work/by_pkg_config' '$source/examples/frame_to_png.c' $flags"
LD_LIBRARY_PATH=$lib "$work/by_pkg_config" "$work/frame.bin" 32 24 "$work/pkg_config.png"
cmp "$work/cmake.png" "$work/pkg_config.png" || fail "two ways to build, two pictures"

eval "c++ -std=c++17 -Wall -Wextra -Wpedantic -Werror -o '$work/cpp_by_pkg_config' '$source/examples/frame_to_png.cpp' $flags"
LD_LIBRARY_PATH=$lib "$work/cpp_by_pkg_config" "$work/frame.bin" 32 24 "$work/cpp_pkg_config.png"
cmp "$work/cmake.png" "$work/cpp_pkg_config.png" || fail "C++ by pkg-config makes another picture"

# The command runs from where it is.
if [[ -x $prefix/bin/korvel ]]; then
  "$prefix/bin/korvel" info "$work/cmake.png" | grep -q '32 x 24\|32x24' || fail "korvel info doesn't know the picture"
fi
echo "installation_test: ok"
