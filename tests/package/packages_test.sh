#!/usr/bin/env bash
# Packs a build, looks at the packages, unpacks them below a folder of their own, and uses them there. Arguments: the
# build folder, the source folder, an empty folder to work in.
set -euo pipefail

readonly build=$1 source=$2 work=$3

fail() {
  echo "packages_test: $*" >&2
  exit 1
}

rm -rf "$work"
mkdir -p "$work"
(cd "$build" && cpack -G DEB -B "$work/packages" >"$work/cpack.log" 2>&1) || fail "$(cat "$work/cpack.log")"

readonly root="$work/a strange root"
for package in libkorvel1 libkorvel-dev korvel-tools; do
  files=("$work/packages/$package"_*.deb)
  [[ -f ${files[0]} ]] || fail "no package $package"
  dpkg-deb -x "${files[0]}" "$root"
done
(($(find "$work/packages" -maxdepth 1 -name '*.deb' | wc -l) == 3)) || fail "there are more packages than three"

if command -v lintian >/dev/null; then
  complaints=$(lintian --fail-on error,warning --no-tag-display-limit "$work/packages"/*.deb 2>&1) ||
    fail "lintian says: $complaints"
fi

# Each thing lies where Debian looks for it, and in the package that it belongs to.
lib=usr/lib/$(dpkg-architecture -qDEB_HOST_MULTIARCH)
readonly lib
belongs() {  # belongs PACKAGE PATH...
  local files
  files=$(dpkg-deb -c "$work/packages/$1"_*.deb)
  for path in "${@:2}"; do
    grep -qE " \./$path( -> .*)?\$" <<<"$files" || fail "$1 has no $path"
  done
}
belongs libkorvel1 "$lib/libkorvel.so.1" 'usr/share/doc/libkorvel1/(copyright|changelog.gz)'
belongs libkorvel-dev "$lib/libkorvel.so" "$lib/pkgconfig/korvel.pc" "$lib/cmake/korvel/korvelConfig.cmake" \
  usr/include/korvel/korvel.h usr/include/korvel/korvel.hpp usr/share/doc/libkorvel-dev/README.md \
  usr/share/doc/libkorvel-dev/examples/CMakeLists.txt
belongs korvel-tools usr/bin/korvel usr/share/man/man1/korvel.1.gz usr/share/bash-completion/completions/korvel \
  usr/share/zsh/vendor-completions/_korvel usr/share/fish/vendor_completions.d/korvel.fish

version=$(dpkg-deb -f "$work/packages"/libkorvel1_*.deb Version)
for package in libkorvel-dev korvel-tools; do
  depends=$(dpkg-deb -f "$work/packages/$package"_*.deb Depends)
  [[ $depends == *"libkorvel1 (= $version)"* ]] || fail "$package depends on: $depends"
done
depends=$(dpkg-deb -f "$work/packages"/libkorvel1_*.deb Depends)
[[ $depends == *libpng16-16*libstdc++6* ]] || fail "libkorvel1 depends on: $depends"

# A frame of 32 by 24 pixels of 12p, all of the value 0x333: one program built with CMake, one with pkg-config.
head -c $((32 * 24 * 12 / 8)) /dev/zero | tr '\0' '\063' >"$work/frame.bin"
readonly examples=$root/usr/share/doc/libkorvel-dev/examples
cmake -S "$examples" -B "$work/examples" -D "CMAKE_PREFIX_PATH=$root/usr" >/dev/null
cmake --build "$work/examples" --target frame_to_png_c >"$work/examples.log" || fail "$(cat "$work/examples.log")"
"$work/examples/frame_to_png_c" "$work/frame.bin" 32 24 "$work/cmake.png"

flags=$(PKG_CONFIG_PATH="$root/$lib/pkgconfig" pkg-config --cflags --libs korvel)
eval "c++ -std=c++17 -o '$work/by_pkg_config' '$examples/frame_to_png.cpp' $flags"
export LD_LIBRARY_PATH=$root/$lib
"$work/by_pkg_config" "$work/frame.bin" 32 24 "$work/pkg_config.png"
cmp "$work/cmake.png" "$work/pkg_config.png" || fail "two ways to build, two pictures"

"$root/usr/bin/korvel" info "$work/cmake.png" >"$work/info" || fail "korvel doesn't run"
grep -q 32 "$work/info" || fail "korvel info prints: $(cat "$work/info")"
[[ $(zcat "$root/usr/share/doc/libkorvel1/changelog.gz") == "$(cat "$source/CHANGELOG.md")" ]] ||
  fail "the package has another changelog"
echo "packages_test: ok"
