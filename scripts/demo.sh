#!/usr/bin/env bash
# Shows libkorvel at work, from nothing: installs what is missing, builds the demo and runs it. A generated camera frame
# is converted in a loop, and five seconds of the camera are recorded; frame, pictures and video land in build/demo.
set -euo pipefail

usage() {
  cat <<'HELP'
Usage: scripts/demo.sh

Builds the demo program and runs it: prints frames per second for each conversion mode, writes the pictures to
build/demo, and records five seconds of a simulated camera to build/demo/camera.avi.
HELP
}

case "${1-}" in
  '') ;;
  --help | -h)
    usage
    exit 0
    ;;
  *)
    echo "demo: unknown argument '$1'" >&2
    usage >&2
    exit 2
    ;;
esac

cd "$(dirname "${BASH_SOURCE[0]}")/.."
scripts/install-dependencies.sh
cmake --preset release
cmake --build --preset release --target korvel-demo --parallel "$(nproc)"
echo
build/release/tools/korvel-demo build/demo
