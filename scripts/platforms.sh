#!/bin/sh
# Builds the project and runs its tests with the packages of three releases of Debian, freshly installed in a folder
# each (as root):
#   bullseye   json-c 0.15, CMake 3.18; the rest is bookworm's, as its g++ 10 and libmicrohttpd 0.9.72 do not suffice
#   bookworm   json-c 0.16, libmicrohttpd 0.9.75, CMake 3.25, g++ 12
#   trixie     json-c 0.18, libmicrohttpd 1.0, CMake 3.31, g++ 14
#
#   scripts/platforms.sh [RELEASE...]
set -eu
cd "$(dirname "$0")/.."
scripts/install-packages.sh mmdebstrap json-schema-test-suite
mirror=$(apt-cache policy libjson-c-dev | sed -n 's/^ *500 \(http[^ ]*\) .*/\1/p' | head -1)

install_debian() { # RELEASE FOLDER
    base=$1
    [ "$base" != bullseye ] || base=bookworm
    rm -rf "$2"
    mmdebstrap --quiet --variant=minbase "$base" "$2" "$mirror" --include="g++,make,cmake,pkg-config
        libjson-c-dev,libpcre2-dev,libgtest-dev,binutils,libmicrohttpd-dev,libasio-dev,libssl-dev,libcrypt-dev,openssl,curl"
    cp -r /usr/share/json-schema-test-suite "$2/usr/share"
    [ "$base" != "$1" ] || return 0
    echo "deb $mirror $1 main" >"$2/etc/apt/sources.list.d/$1.list"
    cp /etc/resolv.conf "$2/etc"
    chroot "$2" apt-get update -qq
    chroot "$2" apt-get install -qq --no-install-recommends --allow-downgrades "libjson-c-dev/$1" "libjson-c5/$1" \
        "cmake/$1" "cmake-data/$1" >/dev/null
}

failed=
[ $# -gt 0 ] || set -- bullseye bookworm trixie
for release in "$@"; do
    echo "== $release"
    root=build/platforms/$release
    mkdir -p build/platforms
    if [ ! -e "$root/complete" ]; then
        install_debian "$release" "$root"
        touch "$root/complete"
    fi
    rm -rf "$root/source"
    mkdir "$root/source"
    git ls-files -z | xargs -0 cp --parents --preserve=timestamps -t "$root/source"
    # the processes and mounts in it end with the shell
    # shellcheck disable=SC2016 # expanded inside
    unshare --mount --pid --fork sh -eu -c '
        mount --bind /dev "$1/dev"
        mount -t proc proc "$1/proc"
        exec env -i "PATH=$PATH" chroot "$1" sh -eu -c "
            c++ --version | head -1
            pkg-config --modversion json-c libpcre2-8 libmicrohttpd | paste -sd\" \"
            cmake -S /source -B /build -DVOBIUTILS_WERROR=ON >/dev/null
            cmake --build /build --parallel $2
            cd /build && ctest --parallel $2 --output-on-failure"
    ' sh "$root" "$(nproc)" || failed="$failed $release"
done
[ -z "$failed" ] || { echo "failed:$failed"; exit 1; }
