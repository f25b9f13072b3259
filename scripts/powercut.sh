#!/bin/sh
# Tries every disk that a loss of power may leave during a save, and during the recovery from it:
# of one database, of two and of three at once, or of TYPES. Then kills a process that transfers from
# one database to another, until 500 kills have met it in the middle of a change.
#   scripts/powercut.sh [TYPES]
set -eu
cd "$(dirname "$0")/.."
scripts/install-packages.sh g++ make cmake pkg-config libjson-c-dev libpcre2-dev libgtest-dev

cmake --preset release >/dev/null
cmake --build --preset release --parallel "$(nproc)" --target powercut --target vobiutils_tests >/dev/null
for types in ${1-1 2 3}; do
    build/release/tests/powercut "$types"
done
KILLS=500 build/release/tests/vobiutils_tests --gtest_filter=SaveTest.TransfersAddUpDespiteKills >/dev/null
