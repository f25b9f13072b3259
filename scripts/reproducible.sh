#!/bin/sh
# Builds the libraries twice, from copies of the sources in different folders, and compares them byte by byte.
#   scripts/reproducible.sh [BUILD-TYPE]    with debug information unless a type is named
set -eu
cd "$(dirname "$0")/.."
scripts/install-packages.sh g++ make cmake pkg-config libjson-c-dev libpcre2-dev
unset CMAKE_CXX_COMPILER_LAUNCHER  # a cache would compare a file with itself

build=$PWD/build/reproducible
rm -rf "$build"
for folder in one another/folder; do
    mkdir -p "$build/$folder"
    git ls-files -z | xargs -0 cp --parents -t "$build/$folder"
    cmake -S "$build/$folder" -B "$build/$folder/build" -DCMAKE_BUILD_TYPE="${1-RelWithDebInfo}" \
        -DVOBIUTILS_BUILD_TESTS=OFF -DVOBIUTILS_BUILD_EXAMPLES=OFF -DCMAKE_INSTALL_PREFIX="$build/$folder/installed" >/dev/null
    cmake --build "$build/$folder/build" --parallel "$(nproc)" --target install >/dev/null
done
cd "$build/one/installed"
find . -name '*.so.*.*' -exec sha256sum {} + >"$build/sums"
[ "$(wc -l <"$build/sums")" -eq 2 ]
cat "$build/sums"
cd "$build/another/folder/installed"
sha256sum --check --quiet "$build/sums"
echo "the libraries are the same"
