#!/bin/sh
# Builds the library with the C library musl, for x86-64 and for MIPS (32 bits, big-endian, under emulation), and runs its
# tests and the example there. The first time it makes a compiler for each, which takes minutes.
#   scripts/musl.sh [MACHINE...]    of "musl" and "mips-musl"; both unless given
set -eu
[ $# -gt 0 ] || set -- musl mips-musl
for machine in "$@"; do
    "$(dirname "$0")/cross.sh" "$machine"
done
