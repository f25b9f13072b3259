#!/bin/sh
# Makes docs/page.png, the picture of the example back end's page in the README.
set -eu
cd "$(dirname "$0")/.."
scripts/install-packages.sh g++ make cmake pkg-config libjson-c-dev libpcre2-dev libmicrohttpd-dev libssl-dev libcrypt-dev \
    curl jq chromium chromium-driver fonts-dejavu-core
build=build/example
cmake -S . -B "$build" -DVOBIUTILS_BUILD_TESTS=OFF >/dev/null
cmake --build "$build" --parallel "$(nproc)" >/dev/null
tests/backend/page.sh "$build/examples/backend/backend" docs/page.png 1100,820
echo "docs/page.png is made: look at it."
