#!/bin/sh
# Makes the Debian packages, below build/package, and tries them in a root folder of their own: unpacked
# by dpkg, a program is built with them there and run.
#   scripts/package.sh --chroot    tries them in a freshly installed Debian instead (as root)
set -eu
cd "$(dirname "$0")/.."
scripts/install-packages.sh g++ make cmake pkg-config libjson-c-dev libpcre2-dev dpkg-dev
[ "${1-}" != --chroot ] || scripts/install-packages.sh debootstrap
scripts/docs.sh >/dev/null

build=build/package
rm -rf $build
cmake -S . -B $build -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX=/usr \
    -DVOBIUTILS_BUILD_TESTS=OFF -DVOBIUTILS_BUILD_EXAMPLES=OFF -DVOBIUTILS_DOCS="$PWD/build/docs" \
    >/dev/null
cmake --build $build --parallel "$(nproc)" >/dev/null
(cd $build && cpack >/dev/null 2>&1)
for package in "$build"/*.deb; do
    echo "== $(basename "$package")"
    dpkg-deb --field "$package" Package Version Architecture Depends Installed-Size
done

exec tests/install/packages.sh $build "$@"
