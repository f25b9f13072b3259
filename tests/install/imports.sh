#!/bin/sh
# Lists the symbols that the libraries named after the nm command take from elsewhere, and fails on one
# that is not in imports.txt: a new dependency is a decision.
set -eu
nm=$1
shift
"$nm" -DC --undefined-only "$@" >undefined
sed -nE 's/^ *[Uw] //p' undefined |
    # names that differ with the system and its word size
    sed -E 's/@.*//; s/unsigned long/unsigned int/g; s/^__isoc(99|23)_//; s/^__(.*)_time64$/\1/
            s/^__time64$/time/; s/^___tls/__tls/
            s/^((f|l)?stat|statfs|open|fopen|fcntl|lseek|ftruncate)64$/\1/' |
    # but the compiler's own arithmetic
    grep -vE '^__(mips16_|sync_|(u?(div|mod)|clz|ctz|bswap|fix|fixuns|float|floatun|eq|ge|gt|lt|le|ne)[sd][if][a-z]*[0-9]?$)|::_M_replace_cold\(' |
    LC_ALL=C sort -u >imports
news=$(LC_ALL=C comm -23 imports "$(dirname "$0")/imports.txt")
[ -z "$news" ] || { printf 'Not in imports.txt:\n%s\n' "$news"; exit 1; }
[ -s imports ] || { echo "no symbols at all"; exit 1; }
echo "$(wc -l <imports) symbols, all known"
