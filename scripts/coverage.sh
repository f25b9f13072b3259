#!/bin/sh
# Measures the test coverage of the libraries, and lists the lines and branches that no test
# reaches. docs/coverage.md gives the reasons.
set -eu
cd "$(dirname "$0")/.."
scripts/install-packages.sh g++ make cmake pkg-config libjson-c-dev libpcre2-dev libgtest-dev \
    binutils json-schema-test-suite gcovr

build=build/coverage
cmake -S . -B $build -DCMAKE_BUILD_TYPE=Debug -DVOBIUTILS_BUILD_EXAMPLES=OFF \
    -DCMAKE_CXX_FLAGS="--coverage -fprofile-update=atomic" \
    -DCMAKE_EXE_LINKER_FLAGS=-Wl,-u,__gcov_dump >/dev/null  # for tests/support/Support.cpp
cmake --build $build --parallel "$(nproc)" >/dev/null
find $build \( -name '*.gcda' -o -name '*CompilerId.gcno' \) -delete
# some child processes of the tests change their user, and write counts, too
chmod -R a+rwX $build
umask 0
ctest --test-dir $build --parallel "$(nproc)" >$build/tests.txt || { cat $build/tests.txt; exit 1; }

report() {
    gcovr --root . --object-directory $build --exclude-throw-branches --exclude-unreachable-branches \
        --exclude tests --exclude bench "$@"
}
report --txt --print-summary
echo "Lines and branches that no test reaches:"
report --json |
    python3 -c '
import json, sys
for file in json.load(sys.stdin)["files"]:
    lines = [line for line in file["lines"] if not line.get("gcovr/noncode")]
    missed = [str(line["line_number"]) for line in lines if line["count"] == 0]
    halves = [str(line["line_number"]) for line in lines if line["count"] > 0
              and any(branch["count"] == 0 for branch in line["branches"])]
    if missed or halves:
        print("%s\n    lines %s\n    branches in %s" %
              (file["file"], " ".join(missed) or "-", " ".join(halves) or "-"))'
