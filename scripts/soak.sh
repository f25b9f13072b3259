#!/bin/sh
# Keeps the back end, vobidb and threads of another process at work on one data folder, in rounds of 20 s, while the clock
# jumps by days, a data file is replaced from outside, the disk is full (as root, where it may mount: a file system of
# 16 MB), and the programs are killed. After each round the files must contain every acknowledged write and nothing torn.
#   scripts/soak.sh MINUTES
set -eu
cd "$(dirname "$0")/.."
minutes=${1?usage: scripts/soak.sh MINUTES}
if [ -z "${SOAK_MOUNTS-}" ] && [ "$(id -u)" -eq 0 ] && unshare --mount true 2>/dev/null; then
    SOAK_MOUNTS=yes exec unshare --mount "$0" "$@"  # the file system ends with it
fi
scripts/install-packages.sh g++ make cmake pkg-config libjson-c-dev libpcre2-dev libgtest-dev libmicrohttpd-dev libasio-dev \
    libssl-dev libcrypt-dev faketime

build=build/soak
cmake -S . -B $build -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build $build --parallel "$(nproc)" --target backend backend_load soak >/dev/null
vobidb=$build/tools/vobidb
[ ! -d tools ] || cmake --build $build --target vobidb >/dev/null

. scripts/backend-functions.sh
port=$((10000 + $$ % 20000))
copy=$PWD/$build/gateway
load=$build/examples/backend/backend_load
faketime=$(dpkg -L libfaketime | grep '/libfaketimeMT.so.1$')
umount $build/gateway 2>/dev/null || true
prepare_gateway "$copy" $port
if [ -n "${SOAK_MOUNTS-}" ]; then
    mount -t tmpfs -o size=16m soak "$copy"
    cp -r examples/gateway/. "$copy"
    set_setting "$copy" webserver_ports "\"$port\""
    set_setting "$copy" ipv4_allow_ports "\"$port\""
fi
keep_passwords "$copy"
set_setting "$copy" duplicate_login_enable '"1"'
set_setting "$copy" enable_multidb_mode 1
set_setting "$copy" log_warning_enable 0
for type in misc qos wifi network security; do # members of the load's own
    sed -i 's/^  "additionalProperties": false/  "additionalProperties": {"required": ["counter"]}/' \
        "$copy/data/$type/${type}_SCHEMA.ldb"
done
echo +0 >"$copy/clock"

start() {
    export LD_PRELOAD="$faketime" FAKETIME_TIMESTAMP_FILE="$copy/clock" FAKETIME_CACHE_DURATION=1 \
        FAKETIME_DONT_FAKE_MONOTONIC=1
    start_backend $build/examples/backend/backend "$copy"
    unset LD_PRELOAD
}

run_threads() {
    soak=$PWD/$build/tests/soak
    cd "$copy"
    LD_PRELOAD=$faketime exec "$soak" 20
}

# Sets a value again and again, to what it is.
run_command() {
    while [ -x $vobidb ] && [ "$(date +%s)" -lt "$1" ]; do
        $vobidb -d "$copy/data" get service >/dev/null && commands=$((commands + 1))
        $vobidb -d "$copy/data" check >/dev/null || echo "vobidb check failed" >&2
    done
    echo "$commands" >$build/commands.txt
}

fail() {
    echo "round $round ($kind): $*" >&2
    cat $build/figures.txt $build/threads.txt >&2
    exit 1
}

backend_pid=''
trap 'kill $backend_pid $threads_pid $load_pid 2>/dev/null || true' EXIT
trap 'exit 1' INT TERM  # without it the shell would end without the line above
start
threads_pid='' load_pid='' round=0 kills=0 requests=0 memory=0 descriptors=0 saved=0 commands=0 full=0
end=$(($(date +%s) + minutes * 60))
while [ "$(date +%s)" -lt "$end" ]; do
    round=$((round + 1))
    kind=$(echo "calm kill full kill" | cut -d' ' -f$((round % 4 + 1)))
    [ "$kind" != full ] || [ -n "${SOAK_MOUNTS-}" ] || kind=calm
    $load run $port 20 $build/journal.json >$build/figures.txt &
    load_pid=$!
    run_threads >$build/threads.txt &
    threads_pid=$!
    run_command $(($(date +%s) + 18)) &
    commands_pid=$!
    sleep 6
    echo "$((round % 5 * 86400 - 86400))" | sed 's/^[0-9]/+&/' >$build/clock
    cp "$build/clock" "$copy/clock"
    cp "$copy/data/fac/fac.ldb" "$copy/data/fac/new" && mv "$copy/data/fac/new" "$copy/data/fac/fac.ldb"
    case $kind in
        kill)
            sleep $((round % 7))
            kill -9 $backend_pid $threads_pid
            kills=$((kills + 1))
            ;;
        full)
            dd if=/dev/zero of="$copy/filling" bs=64k 2>/dev/null || true
            sleep 3
            rm "$copy/filling"
            full=$((full + 1))
            ;;
    esac
    wait $load_pid || [ "$kind$?" = kill3 ] || [ "$kind" = full ] || fail "the load failed"
    wait $threads_pid || [ "$kind" = kill ] || fail "the threads failed"
    wait $commands_pid
    commands=$(cat $build/commands.txt)
    requests=$((requests + $(awk '/ requests,/ { n += $3 } END { print n + 0 }' $build/figures.txt)))
    saved=$((saved + $(awk '{ n += $1 } END { print n + 0 }' $build/threads.txt)))
    if [ "$kind" = kill ]; then
        wait $backend_pid || true
    else
        now=$(awk '/^VmRSS:/ { print $2 }' /proc/$backend_pid/status)
        memory=$((now > memory ? now : memory))
        now=$(find /proc/$backend_pid/fd | wc -l)
        descriptors=$((now > descriptors ? now : descriptors))
        stop_backend || fail "the back end did not end well"
    fi
    rm "$copy/BE.log"  # it is not rotated, and would fill the 16 MB within an hour
    start              # the load does not log out, and sessions are limited
    rm -rf $build/before
    cp -r examples/gateway/data $build/before
    cp "$copy/data/network/network.ldb" $build/before/network
    cp "$copy/data/security/security.ldb" $build/before/security
    cp "$copy/data/gateway/gateway.ldb" $build/before/gateway
    $load check $build/journal.json $build/before "$copy/data" >>$build/figures.txt || fail "the files are wrong"
    if [ "$memory" -gt 65536 ] || [ "$descriptors" -gt 200 ]; then
        fail "the back end takes $memory kB and has $descriptors descriptors open"
    fi
done
stop_backend
echo "$minutes minutes: $round rounds, $kills kills, $full times a full disk, $requests requests, $saved changes by threads," \
    "$commands commands; at most $memory kB and $descriptors descriptors of the back end; nothing lost or torn"
