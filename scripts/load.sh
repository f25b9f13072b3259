#!/bin/sh
# Puts load on the web back end over the loopback interface: writers and readers for 30 s, then
# again with the back end killed meanwhile. Afterwards the data files must contain every
# acknowledged write, and nothing else.
#   scripts/load.sh [SECONDS [KILLS]]
set -eu
cd "$(dirname "$0")/.."
scripts/install-packages.sh g++ make cmake pkg-config libjson-c-dev libpcre2-dev libmicrohttpd-dev libasio-dev \
    libssl-dev libcrypt-dev

seconds=${1-30}
kills=${2-10}
build=build/example
cmake -S . -B "$build" -DVOBIUTILS_BUILD_TESTS=OFF -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build "$build" --parallel "$(nproc)" >/dev/null

. scripts/backend-functions.sh
port=$((10000 + $$ % 20000))
copy=$build/load
before=$build/before
load=$build/examples/backend/backend_load
journal=$build/journal.json
backend=$build/examples/backend/backend

begin() {
    prepare_gateway $copy $port
    keep_passwords $copy
    rm -rf $before
    cp -r $copy/data $before
    set_setting $copy duplicate_login_enable '"1"'
    set_setting $copy enable_multidb_mode "$1"
    set_setting $copy log_warning_enable 0
    for type in misc qos wifi; do # the writers' own members
        sed -i 's/^  "additionalProperties": false/  "additionalProperties": {"required": ["counter", "list"]}/' \
            "$copy/data/$type/${type}_SCHEMA.ldb"
    done
    start_backend $backend $copy
}

check() {
    $load check $journal $before $copy/data
}

trap 'kill $backend_pid 2>/dev/null || true' EXIT
trap 'exit 1' INT TERM  # without it the shell would end without the line above
for multidb in 0 1; do
    echo "== $seconds s of load, enable_multidb_mode $multidb"
    begin $multidb
    $load run $port "$seconds" $journal
    grep VmHWM /proc/$backend_pid/status
    stop_backend
    check
done

for round in $(seq "$kills"); do
    echo "== kill $round of $kills under load"
    begin 1
    $load run $port 60 $journal >$build/figures.txt &
    load_pid=$!
    sleep "$((1 + round % 3)).$((round * 37 % 100))"
    kill -9 $backend_pid
    wait $backend_pid || true
    wait $load_pid || [ $? -eq 3 ] || { cat $build/figures.txt; exit 1; }
    cat $build/figures.txt
    start_backend $backend $copy
    stop_backend
    check
done
[ "$(find $copy -name '.*.saving*' | wc -l)" -le 3 ]
