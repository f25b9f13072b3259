#!/bin/sh
# run.sh BUILD NM CXX [TOOLCHAIN]: installs the build to a folder of its own, checks what the libraries
# export and under which version, and builds and runs the example of the README against them, through
# CMake and through pkg-config. RUN is the emulator of a foreign program, if there has to be one.
set -eu
build=$1
nm=$2
cxx=$3
toolchain=${4:-}
source=$(dirname "$0")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix

cmake --install "$build" --prefix "$prefix" >/dev/null
library=$(find "$prefix" -name libvobiutils.so)
jsonschema=$(find "$prefix" -name libjsonschema-c.so)

"$nm" -DC --defined-only "$library" ${jsonschema:+"$jsonschema"} | cut -d' ' -f3- | grep @ |
    LC_ALL=C sort -u >"$work/exports"
grep "${jsonschema:+.}\|@@VOBIUTILS" "$source/exports.txt" | diff - "$work/exports"

{
    echo '#include <cstdio>'
    for header in "$prefix"/include/*.h; do
        echo "#include <$(basename "$header")>"
    done
    echo 'int main() {'
    # shellcheck disable=SC2016 # a pattern
    sed -n '/^```cpp$/,/^```$/p' "$source/../../README.md" | sed '/^```/d'
    echo 'return failed; }'
} >"$work/example.cpp"

check() {
    (cd "$work" && ${RUN:-} "$1" >output && test -s lan.json && rm lan.json && head -1 output | grep -qx 192.168.1.1)
}

cmake -S "$source" -B "$work/cmake" -DCMAKE_PREFIX_PATH="$prefix" \
    -DCONSUMER_SOURCE="$work/example.cpp" ${toolchain:+"-DCMAKE_TOOLCHAIN_FILE=$toolchain"} >/dev/null
cmake --build "$work/cmake" >/dev/null
check "$work/cmake/consumer"

PKG_CONFIG_PATH=$(dirname "$library")/pkgconfig
export PKG_CONFIG_PATH
others=
if [ -n "$toolchain" ]; then
    others=$VOBIUTILS_PREFIX/lib
    export PKG_CONFIG_LIBDIR="$others/pkgconfig"
fi
# shellcheck disable=SC2046 # a list of options
"$cxx" -std=c++11 "$work/example.cpp" -o "$work/consumer" $(pkg-config --cflags --libs vobiutils) \
    -Wl,-rpath,"$(dirname "$library")" ${others:+"-Wl,-rpath-link,$others"}
check "$work/consumer"
echo "installed, built twice and run"
