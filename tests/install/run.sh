#!/bin/sh
# Installs the build given as $1 to a folder of its own, checks what the library exports, and builds
# and runs the example of the README against it, through CMake and through pkg-config.
set -eu
build=$1
source=$(dirname "$0")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix

cmake --install "$build" --prefix "$prefix" >/dev/null
library=$(find "$prefix" -name libvobiutils.so)

nm -DC --defined-only "$library" | cut -d' ' -f3- | sed 's/@.*//' | grep -v '^VOBIUTILS_' |
    LC_ALL=C sort -u >"$work/exports"
diff "$source/exports.txt" "$work/exports"

{
    echo '#include <cstdio>'
    for header in "$prefix"/include/*.h; do
        echo "#include <$(basename "$header")>"
    done
    echo 'int main() {'
    sed -n '/^```cpp$/,/^```$/p' "$source/../../README.md" | sed '/^```/d'
    echo 'return failed; }'
} >"$work/example.cpp"

check() {
    (cd "$work" && "$1" >output && test -s lan.json && rm lan.json && head -1 output | grep -qx 192.168.1.1)
}

cmake -S "$source" -B "$work/cmake" -DCMAKE_PREFIX_PATH="$prefix" \
    -DCONSUMER_SOURCE="$work/example.cpp" >/dev/null
cmake --build "$work/cmake" >/dev/null
check "$work/cmake/consumer"

PKG_CONFIG_PATH=$(dirname "$library")/pkgconfig
export PKG_CONFIG_PATH
# shellcheck disable=SC2046 # a list of options
c++ -std=c++11 "$work/example.cpp" -o "$work/consumer" $(pkg-config --cflags --libs vobiutils) \
    -Wl,-rpath,"$(dirname "$library")"
check "$work/consumer"
echo "installed, built twice and run"
