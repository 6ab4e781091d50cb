#!/usr/bin/env bash
# Builds the Debian packages twice, in different places and at different times, and compares them byte for byte.
set -euo pipefail

usage() {
  cat <<'HELP'
Usage: scripts/reproducible.sh [--jobs N]

Clones the last commit to two folders with names of different lengths, builds the packages in each, and compares them.
The build differs in source and build folder, time, time zone, locale, umask of the compilation, and order of
compilation. It is without a compiler cache, which could hand the second build what the first one made, and so takes as
long as two builds from nothing.

  --jobs N  how many compilers run at once (as many as there are cores)
  --help    this text
HELP
}

jobs=$(nproc)
while (($# > 0)); do
  case "$1" in
    --jobs)
      jobs=${2:?--jobs wants a number}
      shift 2
      ;;
    --help | -h)
      usage
      exit 0
      ;;
    *)
      echo "reproducible: unknown argument '$1'" >&2
      usage >&2
      exit 2
      ;;
  esac
done

cd "$(dirname "${BASH_SOURCE[0]}")/.."
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
SOURCE_DATE_EPOCH=$(git log -1 --format=%ct)
export SOURCE_DATE_EPOCH

build() {  # build SOURCE BUILD JOBS: leaves the packages in BUILD/packages
  git clone --quiet . "$1"
  cmake -G Ninja -S "$1" -B "$2" -D CMAKE_BUILD_TYPE=Release -D KORVEL_BUILD_TESTS=OFF -D KORVEL_BUILD_BENCHMARKS=OFF \
    -D CMAKE_C_COMPILER_LAUNCHER= -D CMAKE_CXX_COMPILER_LAUNCHER= >"$work/log"
  cmake --build "$2" --parallel "$3" >"$work/log" || { tail -n 30 "$work/log" && exit 1; }
  # The packages' outer archive holds the mode of cpack's own files.
  (umask 022 && cd "$2" && cpack -G DEB -B packages >"$work/log" 2>&1) || { cat "$work/log" && exit 1; }
  echo "reproducible: built in $2"
}

(umask 022 && TZ=UTC LC_ALL=C build "$work/one" "$work/one/build" "$jobs")
(umask 002 && TZ=Asia/Tokyo LC_ALL=C.UTF-8 build "$work/the second source" "$work/another build" "$((jobs + 1))")

differing=0
for first in "$work"/one/build/packages/*.deb; do
  second="$work/another build/packages/$(basename "$first")"
  if cmp "$first" "$second"; then
    sha256sum "$first" | sed "s|$work/one/build/packages/||"
  else
    differing=$((differing + 1))
  fi
done
if ((differing > 0)); then
  echo "reproducible: $differing packages differ; build/reproducible has both, and diffoscope tells where" >&2
  rm -rf build/reproducible
  mkdir -p build/reproducible/{first,second}
  cp "$work"/one/build/packages/*.deb build/reproducible/first
  cp "$work/another build/packages"/*.deb build/reproducible/second
  exit 1
fi
echo "reproducible: the packages are the same"
