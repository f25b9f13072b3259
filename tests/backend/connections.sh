#!/bin/bash
# The web back end under clients that are slow, many, or unclear about where a request ends. PROGRAM
# Run from the project's folder. Skipped (77) without curl or openssl.
set -eu
for tool in curl openssl prlimit; do
    command -v $tool >/dev/null || { echo "skipped: there is no $tool"; exit 77; }
done
work=$(mktemp -d)
port=$((10000 + $$ % 20000))
url=http://127.0.0.1:$port/
failures=0
. scripts/backend-functions.sh
trap '' PIPE
trap 'kill $backend_pid 2>/dev/null || true; rm -rf "$work"' EXIT
trap 'exit 1' INT TERM

expect() { # WHAT WANTED GOT
    [ "$2" = "$3" ] && return
    echo "$1: wanted $2, got $3"
    failures=$((failures + 1))
}

page() { # [OPTION...]: its status, 000 when there is none
    curl --silent --insecure --output /dev/null --write-out '%{http_code}' --max-time 20 "$@" "$url" || true
}

# Opens connections that send TEXT and no end of it, some of which may be refused. Their descriptors are in "held".
hold() { # COUNT TEXT
    held=()
    for _ in $(seq "$1"); do
        exec {descriptor}<>"/dev/tcp/127.0.0.1/$port"
        held+=("$descriptor")
        printf %b "$2" >&"$descriptor" || true
    done 2>/dev/null
}

# How many of them are open after SECONDS in which each sends a byte now and then.
still_open() { # SECONDS
    local end=$((SECONDS + $1)) count=0 status
    until [ $SECONDS -ge $end ]; do
        for descriptor in "${held[@]}"; do printf x >&"$descriptor" || true; done
        sleep 0.5
    done 2>/dev/null
    for descriptor in "${held[@]}"; do
        status=0
        read -r -t 0.1 -u "$descriptor" || status=$?
        [ $status -le 128 ] || count=$((count + 1))  # nothing to read, and no end
        exec {descriptor}>&-
    done 2>/dev/null
    echo $count
}

program_file=$1
prepare_gateway "$work/gateway" "$port"
start_backend "$program_file" "$work/gateway" --name gateway.example

# Rows of connections.txt. The library of 0.9.75 sends its own refusal's headers twice; that of 1.0 does not ask for the
# body of what is refused.
after='GET /log HTTP/1.1\r\nHost: localhost\r\nConnection: close\r\n\r\n'
grep '^[0-9]' tests/backend/connections.txt >"$work/rows"
while read -r row; do
    sent=${row:12}
    [[ $sent == *'||'* ]] || sent="$sent||"
    exec 3<>"/dev/tcp/127.0.0.1/$port"
    env printf '%b' "${sent//|/\\r\\n}$after" >&3 2>/dev/null || true
    got=$(timeout 20 cat <&3 | grep -ao 'HTTP/1\.1 [0-9]*' | cut -c 10- | xargs | sed 's/^400 400$/400/') || true
    exec 3>&-
    wanted=$(xargs <<<"${row:0:12}")
    expect "$sent" "${wanted#100 }" "${got#100 }"
done <"$work/rows"

# A client that never comes to the end of its headers, with 20 connections.
hold 20 'GET / HTTP/1.1\r\nX: '
expect "a client with too many connections" 000 "$(page)"
expect "another one meanwhile" 200 "$(page --interface 127.0.0.2)"
expect "connections that sent slow headers" 0 "$(still_open 22)"
expect "the client afterwards" 200 "$(page)"

# No descriptor is left for a while.
descriptors=("/proc/$backend_pid/fd/"*)
prlimit --pid "$backend_pid" --nofile=$((${#descriptors[@]} + 3)):
hold 8 'GET'
still_open 1 >/dev/null
prlimit --pid "$backend_pid" --nofile=1024:
expect "the page afterwards" 200 "$(page)"

# The end comes in the middle of bodies.
hold 8 'PUT /api/misc/x HTTP/1.1\r\nHost: localhost\r\nContent-Type: application/json\r\nContent-Length: 99\r\n\r\n1'
end=$((SECONDS + 5))
stop_backend || failures=$((failures + 1))
expect "a stop that takes less than 5 s" 1 $((SECONDS < end))

# Each family has its own socket on the port, on all interfaces; half a handshake has its time as well.
openssl req -x509 -newkey rsa:2048 -nodes -subj /CN=localhost -keyout "$work/key" -out "$work/pem" 2>/dev/null
cat "$work/key" >>"$work/pem"
set_setting "$work/gateway" enable_https 1
set_setting "$work/gateway" ssl_certification_file "\"$work/pem\""
set_setting "$work/gateway" ipv6_allow_ports "\"$port\""
start_backend "$program_file" "$work/gateway" --any
url=https://localhost:$port/
expect "the page over TLS" 200 "$(page -4)"
expect "the page over TLS and IPv6" 200 "$(page -6)"
url=$url'login'
login=(--header 'Content-Type: application/json' --data '{"username": "admin", "password": "x"}')
for _ in 1 2 3 4 5 6 7 8 9 10; do page -6 "${login[@]}" >/dev/null; done
expect "a guess over IPv6" 429 "$(page -6 "${login[@]}")"
expect "a guess over IPv4" 401 "$(page -4 "${login[@]}")"
expect "a cookie over TLS" 1 "$(curl -4 --silent --insecure --output /dev/null --dump-header - --json \
    '{"username": "home", "password": "sample-home-password"}' "$url" | grep -c '^Set-Cookie: .*; Secure')"
url=${url%login}
expect "an old version of TLS" 000 "$(page --tls-max 1.1)"
hold 20 '\x16\x03\x01\x02\x00\x01'
expect "another client meanwhile" 200 "$(page -4 --interface 127.0.0.2)"
expect "half handshakes" 0 "$(still_open 12)"
stop_backend
set_setting "$work/gateway" ipv4_allow_ports '""'
start_backend "$program_file" "$work/gateway" --any
expect "IPv4 on a port of IPv6" 000 "$(page -4)"
expect "IPv6 on it" 200 "$(page -6)"
stop_backend
[ $failures = 0 ] && echo "all as wanted"
exit $failures
