#!/usr/bin/env bash
# Takes the library into another project with add_subdirectory: configures it, looks at what would be built, and compiles
# the application. The library itself isn't compiled again, which takes minutes. Arguments: the source folder, an empty
# folder to work in.
set -euo pipefail

readonly source=$1 work=$2

fail() {
  echo "add_subdirectory_test: $*" >&2
  exit 1
}

rm -rf "$work"
mkdir -p "$work"
cat >"$work/CMakeLists.txt" <<'CMAKE'
cmake_minimum_required(VERSION 3.25)
project(application LANGUAGES C)
set(CMAKE_COMPILE_WARNING_AS_ERROR ON)
add_subdirectory("${KORVEL_SOURCE}" korvel)
add_executable(application application.c)
target_link_libraries(application PRIVATE korvel::korvel)
CMAKE
cat >"$work/application.c" <<'C'
#include <korvel/korvel.h>

int main(void) {
  uint32_t major = 0;
  return KORVEL_Library_GetVersionMajor(&major) == KORVEL_RETURN_CODE_Success ? 0 : 1;
}
C
cmake -G Ninja -S "$work" -B "$work/build" -D "KORVEL_SOURCE=$source" -D CMAKE_EXPORT_COMPILE_COMMANDS=ON \
  >"$work/configure.log" 2>&1 || fail "$(cat "$work/configure.log")"

for option in TESTS TOOLS BENCHMARKS; do
  grep -qx "KORVEL_BUILD_$option:BOOL=OFF" "$work/build/CMakeCache.txt" || fail "$option are on by default"
done
[[ ! -e $work/build/CPackConfig.cmake ]] || fail "the project would be packed as the library is"

commands=$work/build/compile_commands.json
mapfile -t of_library < <(grep '"command"' "$commands" | grep -v application.c)
((${#of_library[@]} > 50)) || fail "the library has ${#of_library[@]} sources"
for command in "${of_library[@]}"; do
  [[ $command != *-Werror* ]] || fail "a warning would end the user's build: $command"
done
grep '"command"' "$commands" | grep application.c | grep -q -e -Werror || fail "the user's own code lost its -Werror"

targets=$(ninja -C "$work/build" -t targets all)
! grep -E '_tests?:|/tools/|bench|fuzz' <<<"$targets" || fail "more than the library would be built"
steps=$(ninja -C "$work/build" -n application)
[[ $steps == *'Linking CXX shared library '*libkorvel.so*'Linking '*application* ]] ||
  fail "the application would not be linked with the library: $steps"
ninja -C "$work/build" CMakeFiles/application.dir/application.c.o >"$work/compile.log" || fail "$(cat "$work/compile.log")"
echo "add_subdirectory_test: ok"
