#!/bin/sh
# Installs those of the named Debian packages that are missing, without questions.
set -eu
missing=""
for package in "$@"; do
    dpkg -s "$package" >/dev/null 2>&1 || missing="$missing $package"
done
[ -n "$missing" ] || exit 0
as_root=""
[ "$(id -u)" -eq 0 ] || as_root="sudo"
echo "Installing$missing"
export DEBIAN_FRONTEND=noninteractive
$as_root apt-get update -qq
# shellcheck disable=SC2086 # a list of words
$as_root apt-get install -y -qq --no-install-recommends $missing >/dev/null
