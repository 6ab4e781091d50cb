#!/usr/bin/env bash
# Installs with apt what a build of libkorvel needs and this machine does not have. A machine that has everything
# needs no network and no rights for it.
set -euo pipefail

usage() {
  cat <<'HELP'
Usage: scripts/install-dependencies.sh [--all] [--bench] [--fuzz] [--lint]

Installs the missing packages for building, testing and running libkorvel on Debian 12.

  --all    also what scripts/test.sh --all needs: clang with its run-time libraries
  --bench  also what scripts/bench.sh and scripts/compare-bench.sh need: jq, and the libraries that benchmarks compare
           with: OpenCV, libyuv, swscale, dc1394
  --fuzz   also what scripts/fuzz.sh needs: clang with its run-time libraries, valgrind
  --lint   also what scripts/format.sh and scripts/lint.sh need: clang-format, clang-tidy, shellcheck
  --help   this text
HELP
}

# Each entry is package:probe. A probe with a slash is a header below an include folder, another one is a command.
# Probes rather than the package database, so that tools which came another way count as well.
readonly base_packages=(
  g++:g++
  cmake:cmake
  ninja-build:ninja
  make:make
  pkg-config:pkg-config
  binutils:nm
  abigail-tools:abidiff
  qemu-user:qemu-x86_64
  ccache:ccache
  git:git
  doxygen:doxygen
  libpng-dev:/png.h
  libjpeg62-turbo-dev:/jpeglib.h
  libcairo2-dev:/cairo/cairo.h
  libturbojpeg0-dev:/turbojpeg.h
  libhwy-dev:/hwy/highway.h
  libcli11-dev:/CLI/CLI.hpp
  nlohmann-json3-dev:/nlohmann/json.hpp
  libgtest-dev:/gtest/gtest.h
  libgmock-dev:/gmock/gmock.h
  libbenchmark-dev:/benchmark/benchmark.h
  pngcheck:pngcheck
  imagemagick:convert-im6.q16
  libjpeg-turbo-progs:djpeg
  ffmpeg:ffmpeg
  libaravis-dev:/aravis-0.8/arv.h
  libusb-1.0-0-dev:/libusb-1.0/libusb.h
  man-db:man
  zsh:zsh
  fish:fish
  lintian:lintian
  dpkg-dev:dpkg-shlibdeps
  file:file
)
readonly all_packages=(
  clang:clang++
  libclang-rt-14-dev:clang-runtime
)
readonly bench_packages=(
  jq:jq
  libopencv-core-dev:/opencv4/opencv2/core.hpp
  libopencv-imgproc-dev:/opencv4/opencv2/imgproc.hpp
  libyuv-dev:/libyuv.h
  libswscale-dev:/x86_64-linux-gnu/libswscale/swscale.h
  libavutil-dev:/x86_64-linux-gnu/libavutil/avutil.h
  libdc1394-dev:/dc1394/dc1394.h
)
readonly fuzz_packages=(
  clang:clang++
  libclang-rt-14-dev:clang-runtime
  valgrind:valgrind
)
readonly lint_packages=(
  clang-format:clang-format
  clang-tidy:clang-tidy
  shellcheck:shellcheck
)

is_present() {
  local probe=$1
  case "$probe" in
    clang-runtime)
      compgen -G '/usr/lib/llvm-14/lib/clang/*/lib/linux/libclang_rt.*' >/dev/null
      ;;
    /*)
      [[ -e /usr/include$probe || -e /usr/local/include$probe ]]
      ;;
    *)
      command -v "$probe" >/dev/null
      ;;
  esac
}

wanted=("${base_packages[@]}")
for argument in "$@"; do
  case "$argument" in
    --all) wanted+=("${all_packages[@]}") ;;
    --bench) wanted+=("${bench_packages[@]}") ;;
    --fuzz) wanted+=("${fuzz_packages[@]}") ;;
    --lint) wanted+=("${lint_packages[@]}") ;;
    --help | -h)
      usage
      exit 0
      ;;
    *)
      echo "install-dependencies: unknown argument '$argument'" >&2
      usage >&2
      exit 2
      ;;
  esac
done

missing=()
for entry in "${wanted[@]}"; do
  if ! is_present "${entry#*:}"; then
    missing+=("${entry%%:*}")
  fi
done

if ((${#missing[@]} == 0)); then
  echo "install-dependencies: everything is there"
  exit 0
fi

echo "install-dependencies: missing: ${missing[*]}"

if ! command -v apt-get >/dev/null; then
  echo "install-dependencies: this system has no apt-get; please install the packages above by its own means" >&2
  exit 1
fi

as_root=()
if ((EUID != 0)); then
  if ! command -v sudo >/dev/null; then
    echo "install-dependencies: neither root nor sudo; please run as root:" >&2
    echo "  apt-get update && apt-get install ${missing[*]}" >&2
    exit 1
  fi
  as_root=(sudo)
fi

# The settings go through env because sudo keeps only few variables. Another package manager at work is waited for.
run_apt() {
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -o DPkg::Lock::Timeout=300 -q "$@"
}

if ! { run_apt update && run_apt install --yes --no-install-recommends "${missing[@]}"; }; then
  echo "install-dependencies: apt failed, see above; check the network and the package sources, then try again" >&2
  exit 1
fi
echo "install-dependencies: installed ${missing[*]}"
