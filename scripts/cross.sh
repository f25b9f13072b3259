#!/bin/sh
# Builds the library for another machine and runs its tests and the example there.
#   scripts/cross.sh mips    32 bits, big-endian, 32-bit time_t; under emulation
#   scripts/cross.sh i386    32 bits, 64-bit time_t; natively on x86, as the emulator fails at its threads
#   scripts/cross.sh musl, scripts/cross.sh mips-musl
#                            x86-64 and MIPS (under emulation) with the C library musl; the compiler is made, too
# With "-- COMMAND ..." appended, runs COMMAND in the cross-build environment instead.
#
# The libraries that it depends on are built from Debian's sources, into a cache outside the tree.
set -eu
cd "$(dirname "$0")/.."
[ $# -gt 0 ] || { echo "usage: scripts/cross.sh mips|i386|musl|mips-musl [-- COMMAND ...]" >&2 && exit 2; }
cache=${XDG_CACHE_HOME:-$HOME/.cache}/vobiutils/$1
VOBIUTILS_MACHINE=$1
VOBIUTILS_PREFIX=$cache/prefix
case $1 in
    mips)
        VOBIUTILS_TARGET=mips-linux-gnu
        compiler=g++-mips-linux-gnu
        VOBIUTILS_FLAGS=
        VOBIUTILS_RUN="qemu-mips -L /usr/mips-linux-gnu -E LD_LIBRARY_PATH=$VOBIUTILS_PREFIX/lib"
        ;;
    i386)
        VOBIUTILS_TARGET=i686-linux-gnu
        compiler=g++-i686-linux-gnu
        VOBIUTILS_FLAGS="-D_TIME_BITS=64 -D_FILE_OFFSET_BITS=64"
        VOBIUTILS_RUN="/usr/i686-linux-gnu/lib/ld-linux.so.2 --library-path
            /usr/i686-linux-gnu/lib:$VOBIUTILS_PREFIX/lib"
        ;;
    musl)
        VOBIUTILS_TARGET=x86_64-linux-musl
        compiler="g++-12 gcc-12-source"
        glibc=  # the prefix of the compiler that the one for musl is made of
        VOBIUTILS_FLAGS=
        VOBIUTILS_RUN=
        ;;
    mips-musl)
        VOBIUTILS_TARGET=mips-linux-musl
        compiler="g++-12-mips-linux-gnu gcc-12-source"
        glibc=mips-linux-gnu-
        VOBIUTILS_FLAGS=
        VOBIUTILS_RUN=qemu-mips
        ;;
    *) echo "unknown machine $1" >&2 && exit 2 ;;
esac
export VOBIUTILS_MACHINE VOBIUTILS_TARGET VOBIUTILS_FLAGS VOBIUTILS_RUN VOBIUTILS_PREFIX
PATH=$VOBIUTILS_PREFIX/bin:$PATH  # where a compiler for musl is
shift

# shellcheck disable=SC2086 # a list of packages
scripts/install-packages.sh $compiler qemu-user g++ make cmake pkg-config dpkg-dev \
    libgtest-dev json-schema-test-suite

# Copies the package lists of this machine, with sources in place of binaries.
list_sources() {
    lists=$cache/lists
    mkdir -p "$lists/parts" "$lists/state/partial"
    for list in /etc/apt/sources.list /etc/apt/sources.list.d/*.list; do
        [ ! -f "$list" ] || sed -n 's/^deb[[:blank:]]/deb-src /p' "$list" >"$lists/parts/$(basename "$list")"
    done
    [ ! -f "$lists/parts/sources.list" ] || mv "$lists/parts/sources.list" "$lists/parts/main.list"
    for list in /etc/apt/sources.list.d/*.sources; do
        [ ! -f "$list" ] || sed 's/^Types:.*/Types: deb-src/' "$list" >"$lists/parts/$(basename "$list")"
    done
}

apt_sources() {
    apt-get -qq -o APT::Sandbox::User=root -o Dir::Etc::SourceList=/dev/null \
        -o Dir::Etc::SourceParts="$lists/parts" -o Dir::State::Lists="$lists/state" "$@"
}

# Cross-builds a CMake project into the prefix: install NAME FOLDER OPTION...
install() {
    name=$1
    folder=$2
    shift 2
    cmake -S "$folder" -B "$cache/build/$name" -DCMAKE_TOOLCHAIN_FILE="$PWD/cmake/cross.cmake" \
        -DCMAKE_INSTALL_PREFIX="$VOBIUTILS_PREFIX" -DCMAKE_INSTALL_LIBDIR=lib \
        -DCMAKE_BUILD_TYPE=Release "$@"
    cmake --build "$cache/build/$name" --parallel "$(nproc)" --target install
}

build_dependencies() {
    rm -rf "$cache"
    list_sources
    apt_sources update
    mkdir -p "$cache/sources"
    # from the release itself, because not every mirror keeps the sources of its updates
    release=$(. /etc/os-release && echo "$VERSION_CODENAME")
    (cd "$cache/sources" && apt_sources source "json-c/$release" "pcre2/$release")
    case $VOBIUTILS_TARGET in
        *-musl)
            (cd "$cache/sources" && apt_sources source "musl/$release")
            scripts/musl-toolchain.sh "$glibc" "$VOBIUTILS_TARGET" "$VOBIUTILS_PREFIX" "$(echo "$cache"/sources/musl-*/)"
            ;;
    esac
    install json-c "$(echo "$cache"/sources/json-c-*/)" -DBUILD_TESTING=OFF -DBUILD_STATIC_LIBS=OFF
    install pcre2 "$(echo "$cache"/sources/pcre2-*/)" -DBUILD_SHARED_LIBS=ON \
        -DPCRE2_BUILD_TESTS=OFF -DPCRE2_BUILD_PCRE2GREP=OFF
    install googletest /usr/src/googletest -DBUILD_GMOCK=OFF
}

if [ ! -f "$cache/complete" ]; then
    echo "Building what the library and its tests depend on for $VOBIUTILS_MACHINE"
    log=$(mktemp)
    set +e  # in a list before "||", -e would be ignored
    (set -e && build_dependencies) >"$log" 2>&1
    failed=$?
    set -e
    [ $failed -eq 0 ] || { cat "$log" && exit 1; }
    rm "$log"
    touch "$cache/complete"
fi
if [ "${1:-}" = -- ]; then
    shift
    exec "$@"
fi

build=build/$VOBIUTILS_MACHINE
echo "== $VOBIUTILS_MACHINE"
cmake --preset "$VOBIUTILS_MACHINE" >/dev/null
cmake --build --preset "$VOBIUTILS_MACHINE" --parallel "$(nproc)"
ctest --preset "$VOBIUTILS_MACHINE" --parallel "$(nproc)"

echo "== The example on $VOBIUTILS_MACHINE"
rm -rf "$build/gateway"
cp -r examples/gateway "$build/gateway"
# shellcheck disable=SC2086 # a command and its arguments
(cd "$build/gateway" && $VOBIUTILS_RUN ../examples/typical_write)
