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

# The command runs from where it is.
if [[ -x $prefix/bin/korvel ]]; then
  "$prefix/bin/korvel" info "$work/cmake.png" | grep -q '32 x 24\|32x24' || fail "korvel info doesn't know the picture"
fi
echo "installation_test: ok"
