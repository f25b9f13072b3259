#!/bin/sh
# Fuzzes one target: scripts/fuzz.sh TARGET SECONDS. The targets are the folders in
# tests/fuzz/corpus. An input that crashes is left in the build folder, and the script fails.
set -eu
target=$1
seconds=$2
cd "$(dirname "$0")/.."
scripts/install-packages.sh clang libclang-rt-14-dev make cmake pkg-config libjson-c-dev \
    libpcre2-dev libgtest-dev

build=build/fuzz
cmake -S . -B "$build" -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DVOBIUTILS_FUZZ=ON -DVOBIUTILS_WERROR=ON -DVOBIUTILS_BUILD_EXAMPLES=OFF >/dev/null
cmake --build "$build" --parallel "$(nproc)" --target "fuzz_$target" >/dev/null

found=$PWD/$build
mkdir -p "$found/corpus/$target"
ASAN_OPTIONS=allow_user_segv_handler=0 "$build/tests/fuzz/fuzz_$target" -max_total_time="$seconds" \
    -timeout=5 -max_len=4096 -print_final_stats=1 -artifact_prefix="$found/found-$target-" \
    "$found/corpus/$target" "$PWD/tests/fuzz/corpus/$target"
