#!/bin/sh
# Checks the models of the locks in docs/model, in every order of their steps, and that each of the faults seeded in
# them is found.
#   scripts/model.sh           about a minute
#   scripts/model.sh --long    also the largest, which takes 2 GB of memory
set -eu
cd "$(dirname "$0")/.."
scripts/install-packages.sh spin gcc libc6-dev
build=build/model
mkdir -p $build
exec 9>$build/lock
flock 9  # two at once would read each other's results

# Builds the checker of a model, with 2^TABLE places for states, and runs it; shows how many states it has, or the first fault in them.
search() { # MODEL THREADS OPERATIONS FAULT OPTIMIZATION TABLE [DEFINITION...]
    model=$1 threads=$2 operations=$3 fault=$4 optimization=$5 table=$6
    shift 6
    rm -f $build/*.trail
    cp docs/model/*.pml $build
    (cd $build
        spin -a -DTHREADS="$threads" -DOPERATIONS="$operations" -DFAULT="$fault" "$@" "$model.pml" >spin.txt ||
            { cat spin.txt && exit 1; }
        gcc -w "$optimization" -DSAFETY -DCOLLAPSE -DNOFAIR -o pan pan.c
        ./pan -m1000000 "-w$table" >out.txt)
    # a search that was cut short proves nothing
    ! grep -E 'max search depth too small|out of memory' $build/out.txt
}

holds() { # MODEL THREADS OPERATIONS [DEFINITION...]
    name="$*"
    model=$1 threads=$2 operations=$3
    shift 3
    search "$model" "$threads" "$operations" 0 -O2 26 "$@"
    printf '%-36s %10s states\n' "$name" "$(sed -n 's/^ *\([0-9]*\) states, stored.*/\1/p' $build/out.txt)"
    grep -q 'errors: 0$' $build/out.txt || { grep '^pan:1:' $build/out.txt && exit 1; }
}

finds() { # FAULT MODEL THREADS OPERATIONS [DEFINITION...]
    fault=$1 model=$2 threads=$3 operations=$4
    shift 4
    search "$model" "$threads" "$operations" "$fault" -O0 20 "$@"
    echo "fault $fault: $(sed -n 's/^pan:1: \(.*\) (at depth.*/\1/p' $build/out.txt)"
    grep -q 'errors: 1$' $build/out.txt || { echo "fault $fault of $model is not found" && exit 1; }
}

holds databases 3 2 -DDATABASES=1
holds databases 2 2 -DDATABASES=2
holds controllers 2 2
holds controllers 3 1
holds snapshots 2 2 -DCHANGES=1
holds processes 4 1
for fault in 1 2 3 4 12; do
    finds $fault databases 3 1 -DDATABASES=1
done
for fault in 5 6 7; do
    finds $fault controllers 3 1
done
finds 8 controllers 3 2
for fault in 9 10 11; do
    finds $fault snapshots 2 2 -DCHANGES=2
done
for fault in 13 14; do
    finds $fault processes 4 1
done
if [ "${1-}" = --long ]; then
    holds databases 3 1 -DDATABASES=2
fi
