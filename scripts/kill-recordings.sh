#!/usr/bin/env bash
# Kills recordings at random moments, from nothing: installs what is missing, builds the release preset's command, and
# repairs what is left.
set -euo pipefail

usage() {
  cat <<'HELP'
Usage: scripts/kill-recordings.sh [COUNT]

Kills COUNT recordings, 100 by default, each at a random moment. Fails unless 'korvel repair-avi' brings back every
frame that was counted as written, bit by bit, and ffmpeg decodes the result without a complaint. KORVEL_SEED in the
environment repeats the moments of an earlier run.

  --help   this text
HELP
}

count=100
while (($# > 0)); do
  case "$1" in
    --help | -h)
      usage
      exit 0
      ;;
    *)
      if [[ ! $1 =~ ^[1-9][0-9]*$ ]]; then
        echo "kill-recordings: unknown argument '$1'" >&2
        usage >&2
        exit 2
      fi
      count=$1
      ;;
  esac
  shift
done

cd "$(dirname "${BASH_SOURCE[0]}")/.."
scripts/install-dependencies.sh
cmake --preset release
cmake --build --preset release --target korvel-tool --parallel "$(nproc)"
echo
bash tests/tools/korvel_kill_test.sh build/release/tools/korvel "$count"
