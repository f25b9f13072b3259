#!/bin/sh
# Builds the library and runs the example on a copy of the sample gateway.
set -eu
cd "$(dirname "$0")/.."
scripts/install-packages.sh g++ make cmake pkg-config libjson-c-dev libpcre2-dev diffutils

build=build/example
cmake -S . -B "$build" -DVOBIUTILS_BUILD_TESTS=OFF >/dev/null
cmake --build "$build" --parallel "$(nproc)" >/dev/null

copy=$build/gateway
rm -rf "$copy"
cp -r examples/gateway "$copy"
(cd "$copy" && ../examples/typical_write)

echo
echo "== What changed in the data files"
diff -ru examples/gateway/data "$copy/data" || true
echo
echo "The changed copy is in $copy, its log in $copy/BE.log."
