#!/usr/bin/env bash
# Records video for a long time, from nothing: installs what is missing, builds the release preset's soak program and
# runs it.
set -euo pipefail

usage() {
  cat <<'HELP'
Usage: scripts/soak.sh [MINUTES]

Records frames of 1920 x 1080 for MINUTES, 10 by default, as fast as the encoder goes and at times faster, so that
frames are dropped; then makes 1,000 short recordings. Prints memory and descriptors over time, to build/soak/soak.txt
too, and fails if either grows, if a frame is neither written nor counted as dropped, or if ffprobe counts other frames
in a file than were written. A file is removed once it is checked; the folder for temporary files needs 2 GiB.

  --help   this text
HELP
}

minutes=10
while (($# > 0)); do
  case "$1" in
    --help | -h)
      usage
      exit 0
      ;;
    *)
      if [[ ! $1 =~ ^[1-9][0-9]*$ ]]; then
        echo "soak: unknown argument '$1'" >&2
        usage >&2
        exit 2
      fi
      minutes=$1
      ;;
  esac
  shift
done

cd "$(dirname "${BASH_SOURCE[0]}")/.."
scripts/install-dependencies.sh
cmake --preset release
cmake --build --preset release --target korvel_soak --parallel "$(nproc)"

folder=${TMPDIR:-/tmp}
free=$(df --output=avail --block-size=1M "$folder" | tail -n 1)
if ((free < 2048)); then
  echo "soak: $folder has only $free MiB left; set TMPDIR to a folder with 2 GiB" >&2
  exit 1
fi

mkdir -p build/soak
echo
build/release/tests/korvel_soak --seconds $((minutes * 60)) | tee build/soak/soak.txt
