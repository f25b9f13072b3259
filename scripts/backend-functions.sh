# shellcheck shell=sh
# Functions for scripts that run the web back end on a copy of the sample gateway. Source this file in the
# project's folder.

prepare_gateway() { # FOLDER PORT
    rm -rf "$1"
    cp -r examples/gateway "$1"
    set_setting "$1" webserver_ports "\"$2\""
    set_setting "$1" ipv4_allow_ports "\"$2\""
    set_setting "$1" ipv6_allow_ports '""'
}

set_setting() { # FOLDER NAME VALUE
    sed -i "s|\"$2\": .*|\"$2\": $3,|" "$1/backend.json"
}

keep_passwords() { # FOLDER: the sample's users need not change theirs first
    sed -i '/"mustChangePassword"/d' "$1/data/gateway/gateway.ldb"
}

# Starts the back end and waits until it listens. Sets backend_pid. Its stacks have BACKEND_STACK bytes if that
# is set.
start_backend() { # PROGRAM FOLDER [ARGUMENT...]
    program=$(realpath "$1")
    backend_folder=$2
    shift 2
    : >"$backend_folder/output.txt"
    (cd "$backend_folder" &&
        exec ${BACKEND_STACK:+prlimit "--stack=$BACKEND_STACK"} "$program" "$@" >output.txt 2>&1) &
    backend_pid=$!
    tries=0
    until grep -q '^listening' "$backend_folder/output.txt"; do
        tries=$((tries + 1))
        if [ $tries -gt 3000 ] || ! kill -0 $backend_pid 2>/dev/null; then
            cat "$backend_folder/output.txt" >&2
            return 1
        fi
        sleep 0.1
    done
}

# Stops the back end, and shows its output if it fails.
stop_backend() {
    kill "$backend_pid" 2>/dev/null || true
    wait "$backend_pid" || {
        echo "the back end ended with $?:"
        cat "$backend_folder/output.txt"
        return 1
    } >&2
}
