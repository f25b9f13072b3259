#!/bin/sh
# Prints the size of the libraries, built for size and stripped, on x86-64 and MIPS, and the memory
# that the databases of the sample gateway take.
set -eu
cd "$(dirname "$0")/.."
scripts/install-packages.sh g++ make cmake pkg-config libjson-c-dev libpcre2-dev binutils

build() { # FOLDER OPTION...
    folder=$1
    shift
    cmake -S . -B "$folder" -DCMAKE_BUILD_TYPE=MinSizeRel -DVOBIUTILS_BUILD_TESTS=OFF \
        -DVOBIUTILS_BUILD_EXAMPLES=OFF -DVOBIUTILS_BUILD_TOOLS=OFF "$@" >/dev/null
    cmake --build "$folder" --parallel "$(nproc)" >/dev/null
}

measure() { # MACHINE FOLDER TOOL-PREFIX
    for name in libvobiutils jsonschema/libjsonschema-c; do
        library=$2/$name.so
        stripped=$2/stripped.so
        "$3strip" -o "$stripped" "$library"
        printf '%-8s %-20s ' "$1" "$(basename "$library")"
        "$3size" "$stripped" | awk 'NR == 2 { printf "text %d data %d bss %d ", $1, $2, $3 }'
        printf 'file %d ' "$(wc -c <"$stripped")"
        printf 'relocations %d\n' "$("$3readelf" -rW "$stripped" | grep -c '^[0-9a-f]\{8\}')"
    done
}

native=build/size
build $native
scripts/cross.sh mips -- true
build_mips=build/size-mips
scripts/cross.sh mips -- cmake --preset mips -B $build_mips -DCMAKE_BUILD_WITH_INSTALL_RPATH=ON \
    -DVOBIUTILS_BUILD_TESTS=OFF -DVOBIUTILS_BUILD_EXAMPLES=OFF -DVOBIUTILS_BUILD_TOOLS=OFF >/dev/null
scripts/cross.sh mips -- cmake --build $build_mips --parallel "$(nproc)" >/dev/null

measure x86-64 $native ""
measure MIPS $build_mips mips-linux-gnu-

echo
echo "The largest exported functions and tables, on MIPS:"
mips-linux-gnu-nm -CS --defined-only --size-sort -r -D $build_mips/libvobiutils.so | head -10 |
    while read -r _ size _ name; do printf '%6d %s\n' "0x$size" "$name"; done

echo
echo "Loading the nine databases of the sample gateway, on x86-64:"
c++ -std=c++20 -O2 -Iinclude bench/Memory.cpp -o $native/memory -L$native -lvobiutils -ljson-c \
    -Wl,-rpath,"$PWD/$native:$PWD/$native/jsonschema"
for how in json-c library; do
    printf '%-8s ' $how
    (cd examples/gateway && ../../$native/memory $how)
done
