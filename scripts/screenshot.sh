#!/bin/sh
# Makes pictures of the example back end's page, on a desktop, on a phone and in dark colours; docs/page.png, in the
# README, is one of them.
set -eu
cd "$(dirname "$0")/.."
scripts/install-packages.sh g++ make cmake pkg-config libjson-c-dev libpcre2-dev libmicrohttpd-dev \
    libasio-dev libssl-dev libcrypt-dev \
    curl jq chromium chromium-driver fonts-dejavu-core
scripts/install-axe.sh
build=build/example
cmake -S . -B "$build" -DVOBIUTILS_BUILD_TESTS=OFF >/dev/null
cmake --build "$build" --parallel "$(nproc)" >/dev/null
tests/backend/page.sh "$build/examples/backend/backend" "$build"
cp "$build/desktop.png" docs/page.png
echo "docs/page.png, $build/phone.png and $build/dark.png are made: look at them."
