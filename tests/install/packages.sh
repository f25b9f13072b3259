#!/bin/sh
# packages.sh FOLDER [--chroot]: installs the packages in FOLDER in a root of their own, where the program
# of the README is built with them and run.
set -eu
packages=$(realpath "$1")
source=$(dirname "$0")
root=$(mktemp -d)
trap 'rm -rf "$root"' EXIT

# shellcheck source=tests/install/example.sh
. "$source/example.sh"

if [ "${2-}" = --chroot ]; then
    mirror=$(apt-cache policy libjson-c-dev | sed -n 's/^ *500 \(http[^ ]*\) .*/\1/p' | head -1)
    debootstrap --variant=minbase --include=g++,pkg-config,man-db "$(. /etc/os-release
        echo "$VERSION_CODENAME")" "$root" "$mirror" >/dev/null
    cp "$packages"/*.deb "$root/tmp"
    write_program >"$root/tmp/program.cpp"
    write_database "$root/tmp"
    # shellcheck disable=SC2016 # expanded inside
    chroot "$root" sh -ec 'cd /tmp
        apt-get install -y --no-install-recommends ./*.deb
        c++ program.cpp -o program $(pkg-config --cflags --libs vobiutils)
        ./program >answer
        man -w LocalDbTransaction vobidb
        vobidb get -r network lan.dhcp.reservations.[0].host | grep -x printer
        apt-get purge -y libvobiutils1
        ! ls /usr/lib/*/libvobiutils*' >"$root/messages" 2>&1 || { cat "$root/messages"; exit 1; }
    answer=$root/tmp/answer
else
    mkdir -p "$root/var/lib/dpkg"
    : >"$root/var/lib/dpkg/status"
    # its dependencies are those of this machine
    dpkg --root="$root" --force-depends --force-not-root --force-script-chrootless \
        --log=/dev/null --install "$packages"/*.deb >"$root/messages" 2>&1
    test -e "$root"/usr/share/man/man3/LocalDbTransaction.3* && test -e "$root"/usr/share/man/man1/vobidb.1*
    for package in libvobiutils1 libvobiutils-dev libvobiutils-doc vobidb; do
        for library in json-c=json-c pcre2=libpcre2-8; do
            grep -q "\"${library%=*}\", \"versionInfo\": \"$(pkg-config --modversion "${library#*=}")\"" \
                "$root/usr/share/doc/$package/libvobiutils.spdx.json"
        done
    done
    write_program >"$root/program.cpp"
    write_database "$root"
    library=$(dirname "$(find "$root/usr" -name libvobiutils.so)")
    PKG_CONFIG_PATH=$library/pkgconfig
    export PKG_CONFIG_PATH
    # shellcheck disable=SC2046 # a list of options
    c++ "$root/program.cpp" -o "$root/program" $(pkg-config --cflags --libs vobiutils)
    (cd "$root" && LD_LIBRARY_PATH=$library ./program >answer &&
        usr/bin/vobidb get -r network lan.dhcp.reservations.[0].host | grep -qx printer)
    answer=$root/answer
fi
head -1 "$answer" | grep -qx 192.168.1.1
echo "the packages install and work"
