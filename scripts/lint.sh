#!/bin/sh
# Checks every C++ file with clang-format, clang-tidy and cppcheck, and the scripts with shellcheck.
# Changes nothing: run "clang-format -i FILE" to format a file.
set -eu
cd "$(dirname "$0")/.."
scripts/install-packages.sh g++ make cmake pkg-config libjson-c-dev libpcre2-dev libgtest-dev \
    libbenchmark-dev rapidjson-dev nlohmann-json3-dev libspdlog-dev libmicrohttpd-dev libasio-dev libssl-dev libcrypt-dev \
    clang clang-format clang-tidy cppcheck shellcheck

build=build/lint
CXX=clang++ cmake -S . -B $build -DCMAKE_EXPORT_COMPILE_COMMANDS=ON -DVOBIUTILS_BUILD_BENCH=ON >/dev/null
sources=$(git ls-files '*.cpp')
headers=$(git ls-files '*.h')

echo "== clang-format"
# shellcheck disable=SC2086 # lists of files
clang-format --dry-run --Werror $sources $headers

echo "== shellcheck"
# shellcheck disable=SC2046
shellcheck --external-sources $(git ls-files '*.sh') .ci/run

echo "== cppcheck"
# suppressed: C++20 that it misparses, a buffer that is filled on use, a member that is initialized
# in two steps, a token of a path (two words) that is passed by value
cppcheck --project=$build/compile_commands.json --quiet --error-exitcode=1 --inline-suppr \
    --enable=warning,performance,portability --library=googletest -j "$(nproc)" \
    --suppress=internalAstError --suppress=useInitializationList --suppress=uninitMemberVar \
    --suppress=passedByValue

echo "== clang-tidy"
echo "$sources" | xargs -P "$(nproc)" -n 4 clang-tidy -p $build --quiet 2>/dev/null
