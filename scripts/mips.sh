#!/bin/sh
# Builds the library for 32-bit big-endian MIPS and runs its tests and the example under emulation.
exec "$(dirname "$0")/cross.sh" mips "$@"
