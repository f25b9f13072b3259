#!/bin/sh
# Builds the Debian packages in build/package and tests them: unpacks them with dpkg in a root
# folder of their own, builds a program with them there, and runs it.
# Each file in them has the date of the last commit, or of SOURCE_DATE_EPOCH, so that two builds give the same packages.
#   scripts/package.sh --chroot    tests them in a freshly installed Debian instead (as root)
set -eu
cd "$(dirname "$0")/.."
scripts/install-packages.sh g++ make cmake pkg-config libjson-c-dev libpcre2-dev dpkg-dev
[ "${1-}" != --chroot ] || scripts/install-packages.sh debootstrap
scripts/docs.sh >/dev/null
SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH-$(git log -1 --format=%ct || date +%s)}
export SOURCE_DATE_EPOCH
umask 022  # a stricter one would be that of the folders in the packages

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
