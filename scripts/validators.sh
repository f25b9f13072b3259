#!/bin/sh
# Compares the validator with four others: Blaze, ajv, schemasafe and python3-jsonschema.
#   scripts/validators.sh                                verdicts and places of faults, on the cases of
#                                                        the JSON Schema Test Suite and on 100,000
#                                                        generated pairs
#   scripts/validators.sh SEED SCHEMAS INSTANCES         on so many generated pairs
#   scripts/validators.sh bench                          times
set -eu
cd "$(dirname "$0")/.."
scripts/install-packages.sh g++ make cmake pkg-config libjson-c-dev libpcre2-dev \
    python3-jsonschema json-schema-test-suite
command -v npm >/dev/null || scripts/install-packages.sh nodejs npm

source=$PWD
build=$source/build/validators
cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=Release -DVOBIUTILS_BUILD_TESTS=OFF \
    -DVOBIUTILS_BUILD_EXAMPLES=OFF >/dev/null
cmake --build "$build" --parallel "$(nproc)" --target jsonschema-c >/dev/null

compile() { # SOURCE PROGRAM
    # shellcheck disable=SC2046 # the flags are separate words
    c++ -std=c++20 -O2 "$source/$1" -o "$build/$2" -I"$source/jsonschema" \
        $(pkg-config --cflags --libs json-c) -L"$build/jsonschema" -ljsonschema-c \
        -Wl,-rpath,"$build/jsonschema"
}

cd "$build"
[ -f package.json ] || echo '{"private": true}' >package.json
npm install --silent --no-audit --no-fund @sourcemeta/jsonschema ajv ajv-formats @exodus/schemasafe
if [ "${1:-}" = bench ]; then
    compile bench/Validation.cpp validation
    exec node "$source/bench/validators.mjs" "$build/validation" "$source/examples/gateway"
fi
compile tests/validators/verdicts.cpp verdicts
compare=$source/tests/validators/compare.mjs
if [ $# -gt 0 ]; then
    exec node "$compare" "$build/verdicts" "$@"
fi
node "$compare" "$build/verdicts" /usr/share/json-schema-test-suite/tests/draft7/*.json
node "$compare" "$build/verdicts" 1 500 200
