#!/bin/sh
# Builds and runs all tests: under the sanitizers, then plain. "scripts/test.sh PRESET" runs one of the
# builds of CMakePresets.json.
set -eu
cd "$(dirname "$0")/.."
scripts/install-packages.sh g++ make cmake pkg-config libjson-c-dev libpcre2-dev libgtest-dev \
    binutils json-schema-test-suite libcpp-httplib-dev libssl-dev curl

run() {
    echo "== $1"
    cmake --preset "$1" >/dev/null
    cmake --build "build/$1" --parallel "$(nproc)"
    ctest --test-dir "build/$1" --output-on-failure --parallel "$(nproc)"
}

if [ $# -gt 0 ]; then
    run "$1"
    exit
fi
run asan-ubsan
run tsan
run release
