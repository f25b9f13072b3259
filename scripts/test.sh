#!/bin/sh
# Builds the project and runs its tests.
#   scripts/test.sh           the preset "release"
#   scripts/test.sh --all     first under the sanitizers, then "release"
#   scripts/test.sh PRESET    one preset of CMakePresets.json
#   scripts/test.sh --processes    the count of processes in full, in the preset "release": minutes
set -eu
cd "$(dirname "$0")/.."
scripts/install-packages.sh g++ make cmake pkg-config libjson-c-dev libpcre2-dev libgtest-dev \
    binutils json-schema-test-suite libmicrohttpd-dev libasio-dev libssl-dev libcrypt-dev openssl curl
scripts/install-axe.sh

[ "${1-}" != clang ] || scripts/install-packages.sh clang

summary=
# Prints how many tests ran, and which were skipped and why, in this build and in those before it; then the
# summary of ctest.
summarize() { # BUILD OUTPUT
    skipped=$(sed -n 's/.*Test *#[0-9]*: \([^ ]*\) .*\*\*\*Skipped.*/\1/p' "$2")
    total=$(grep -c '^ *[0-9]*/[0-9]* Test *#' "$2" || true)
    not_run=$(echo "$skipped" | grep -c . || true)
    summary="$summary== $1: $((total - not_run)) tests ran, $not_run skipped
"
    for test in $skipped; do
        # a script prints "skipped: REASON"; GoogleTest prints the reason after the line "PLACE: Skipped"
        reason=$(sed -n "\\|Test: $test\\( .*\\)*\$|,/^<end of output>/{s/^skipped: //p;/: Skipped\$/{n;p;};}" \
            "build/$1/Testing/Temporary/LastTest.log")
        summary="$summary   $test: ${reason:-it does not say why}
"
    done
    printf '%s' "$summary"
    sed -n '/^[0-9]*% tests passed/,$p' "$2"
}

run() {
    echo "== $1"
    cmake --preset "$1" >/dev/null
    cmake --build --preset "$1" --parallel "$(nproc)"
    output=build/$1/tests.txt
    echo 1 >"$output.status"
    {
        ctest --preset "$1" --parallel "$(nproc)" && echo 0 >"$output.status"
    } | tee "$output" | sed '/^[0-9]*% tests passed/,$d'
    summarize "$1" "$output"
    return "$(cat "$output.status")"
}

case ${1-} in
    --all)
        run asan-ubsan
        run tsan
        run release
        ;;
    --processes)
        cmake --preset release >/dev/null
        cmake --build --preset release --parallel "$(nproc)" --target processes
        build/release/tests/processes 5000
        ;;
    "") run release ;;
    *) run "$1" ;;
esac
