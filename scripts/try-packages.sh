#!/usr/bin/env bash
# Installs the Debian packages into a Debian 12 that has nothing else, and uses them there as an application does.
set -euo pipefail

usage() {
  cat <<'HELP'
Usage: scripts/try-packages.sh [FOLDER]

Makes a Debian 12 of its own with debootstrap, installs the packages of FOLDER there with apt, builds one example with
CMake and one with pkg-config, runs them and the korvel command, reads its manual, and removes the packages again.
Without FOLDER, packs build/release first. Wants root, for chroot, and a Debian mirror: that of this machine.

  --help  this text
HELP
}

packages=
for argument in "$@"; do
  case "$argument" in
    --help | -h)
      usage
      exit 0
      ;;
    -*)
      echo "try-packages: unknown argument '$argument'" >&2
      usage >&2
      exit 2
      ;;
    *) packages=$(realpath "$argument") ;;
  esac
done

cd "$(dirname "${BASH_SOURCE[0]}")/.."
if ((EUID != 0)); then
  echo "try-packages: chroot wants root" >&2
  exit 1
fi
if ! command -v debootstrap >/dev/null; then
  apt-get install --yes --no-install-recommends debootstrap
fi

work=$(mktemp -d)
readonly root=$work/root
clean_up() {
  if mountpoint -q "$root/proc"; then umount "$root/proc"; fi
  rm -rf --one-file-system "$work"
}
trap clean_up EXIT

if [[ -z $packages ]]; then
  packages=$work/packages
  (cd build/release && cpack -G DEB -B "$packages")
fi

# shellcheck disable=SC2016
mirror=$(apt-get indextargets --format '$(REPO_URI)' 'Codename: bookworm' | sed -n 1p)
debootstrap --variant=minbase bookworm "$root" "$mirror"
mount -t proc proc "$root/proc"
cp "$packages"/*.deb "$root/tmp/"

inside() { chroot "$root" env DEBIAN_FRONTEND=noninteractive LC_ALL=C.UTF-8 "$@"; }
inside sh -c 'apt-get update && apt-get install --yes --no-install-recommends /tmp/*.deb'
inside apt-get install --yes --no-install-recommends g++ cmake make pkg-config man-db

# shellcheck disable=SC2016
inside sh -euxc '
  cd /tmp
  head -c $((32 * 24 * 12 / 8)) /dev/zero | tr "\0" "\063" >frame.bin
  cmake -S /usr/share/doc/libkorvel-dev/examples -B examples
  cmake --build examples --target frame_to_png_c
  examples/frame_to_png_c frame.bin 32 24 cmake.png
  c++ -std=c++17 -o by_pkg_config /usr/share/doc/libkorvel-dev/examples/frame_to_png.cpp \
    $(pkg-config --cflags --libs korvel)
  ./by_pkg_config frame.bin 32 24 pkg_config.png
  cmp cmake.png pkg_config.png
  korvel info cmake.png
  korvel simulate scene.png --format RGB8 --size 320x240
  man korvel | grep -A 1 "^NAME"
  apt-get purge --yes libkorvel1
  test -z "$(find / -xdev -name "*korvel*" -not -path "/tmp/*" -not -path "/var/lib/apt/*" -not -path "/var/cache/man/*")"'
echo "try-packages: ok"
