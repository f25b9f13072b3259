#!/bin/sh
# Times the workloads, the same work written by hand, and the same work with other libraries.
#   scripts/bench.sh                 all workloads, and the instructions of the path workloads
#   scripts/bench.sh PATTERN         the workloads whose name matches a regular expression
#   scripts/bench.sh --count NAME    only counts instructions, of the workloads whose name contains NAME;
#                                    the counts do not depend on the load of the machine
#   scripts/bench.sh --validators    validation, beside other validators
set -eu
cd "$(dirname "$0")/.."
[ "${1:-}" != --validators ] || exec scripts/validators.sh bench
scripts/install-packages.sh g++ make cmake pkg-config libjson-c-dev libpcre2-dev libbenchmark-dev \
    rapidjson-dev nlohmann-json3-dev libspdlog-dev valgrind

build=build/bench
cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=Release -DVOBIUTILS_BUILD_BENCH=ON -DVOBIUTILS_WERROR=ON \
    -DVOBIUTILS_BUILD_TESTS=OFF -DVOBIUTILS_BUILD_EXAMPLES=OFF >/dev/null
cmake --build "$build" --parallel "$(nproc)" >/dev/null

count() {
    counts=$build/counts
    rm -rf "$counts"
    mkdir -p "$counts"
    valgrind --tool=callgrind --callgrind-out-file="$counts/out" "$build/bench/bench" --count "$1" \
        2>/dev/null
    # each dump names its workload and variant, and covers a thousand operations
    find "$counts" -name 'out.*' -print0 | sort -zV | xargs -0 cat | awk '
        /^desc: Trigger: Client Request: / { sub(/^.*Request: /, ""); split($0, name, "|") }
        /^summary: / && name[1] != "" {
            if (name[1] != last) { printf "%s%-42s", last != "" ? "\n" : "", name[1]; last = name[1] }
            printf " %s %.0f", name[2], $2 / 1000
        }
        END { print "" }'
}

if [ "${1:-}" = --count ]; then
    count "${2:-lookup}"
    exit
fi
"$build/bench/bench" "${1:-.}"
if [ $# -eq 0 ]; then
    echo
    echo "Instructions per operation"
    count lookup
    count set
fi
