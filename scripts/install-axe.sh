#!/bin/sh
# Installs the npm package axe-core, for the test of the back end's page: it finds what hinders those who cannot see or
# point. Without npm, or without a network, the page is tested without it.
set -eu
cd "$(dirname "$0")/.."
folder=build/axe
command -v npm >/dev/null || exit 0
mkdir -p $folder
cmp -s tests/backend/package.json $folder/package.json && [ -d $folder/node_modules/axe-core ] && exit 0
cp tests/backend/package.json $folder/
npm install --prefix $folder --no-package-lock --ignore-scripts --no-audit --no-fund --silent \
    --fetch-retries 0 --fetch-timeout 30000 || echo "axe-core is not installed: the page is tested without it"
