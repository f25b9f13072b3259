#!/bin/sh
# Builds the library, runs the web back end on a copy of the sample gateway, sends it the requests
# of one session and shows the answers.
#   scripts/example.sh --serve    keeps the back end running, for a browser
#   scripts/example.sh --small    runs the smallest example instead, which has no network code
set -eu
cd "$(dirname "$0")/.."
scripts/install-packages.sh g++ make cmake pkg-config libjson-c-dev libpcre2-dev diffutils curl \
    libmicrohttpd-dev libasio-dev libssl-dev libcrypt-dev

build=build/example
copy=$build/gateway
cmake -S . -B "$build" -DVOBIUTILS_BUILD_TESTS=OFF >/dev/null
cmake --build "$build" --parallel "$(nproc)" >/dev/null

show_changes() {
    echo
    echo "== What changed in the data files"
    diff -ru -x ".*" examples/gateway/data "$copy/data" || true
}

if [ "${1-}" = --small ]; then
    rm -rf "$copy"
    cp -r examples/gateway "$copy"
    (cd "$copy" && ../examples/typical_write)
    show_changes
    echo
    echo "The changed copy is in $copy, its log in $copy/BE.log."
    exit
fi

. scripts/backend-functions.sh
port=${PORT-8081}
url=http://127.0.0.1:$port
prepare_gateway "$copy" "$port"
start_backend $build/examples/backend/backend "$copy"
trap 'kill $backend_pid 2>/dev/null || true' EXIT
trap exit INT TERM

if [ "${1-}" = --serve ]; then
    echo "Open $url/ and log in as admin, with the password sample-admin-password, which has to be changed first."
    echo "It works on $copy. Control-C ends it."
    wait $backend_pid
    exit
fi

token=
version=
# Sends a request as the page does, and shows it with the answer and its status. A change at an index is made to
# the version that an answer had last.
ask() { # METHOD PATH [BODY]
    printf '\n> %s %s %s\n' "$1" "$2" "${3-}"
    condition=
    case "$1 $2" in
        GET*) ;;
        *\[*) condition="If-Match: $version" ;;
    esac
    curl --silent --globoff --max-time 10 --request "$1" \
        ${3+--data "$3" --header 'Content-Type: application/json'} \
        ${token:+--header "Authorization: Bearer $token"} ${condition:+--header "$condition"} \
        --dump-header $build/headers.txt --write-out '\n< %{http_code}\n' "$url$2" |
        tee $build/answer.txt
    etag=$(sed -n 's/^ETag: \(.*\)\r$/\1/p' $build/headers.txt)
    version=${etag:-$version}
}

echo "The back end listens on $url."
ask GET /api/wifi
ask POST /login '{"username": "admin", "password": "guessed"}'
ask POST /login '{"username": "admin", "password": "sample-admin-password"}'
token=$(sed -n 's/.*"token": "\([0-9a-f]*\)".*/\1/p' $build/answer.txt)
ask GET /api/network/lan
ask PUT /api/me/password '{"old": "sample-admin-password", "new": "example-admin-password"}'
ask GET '/api/network/lan.ipv4.address'
ask GET '/api/wifi/ssids.[2].name'
ask PUT '/api/wifi/ssids.[2].name' '"garden"'
ask PUT '/api/wifi/ssids.[2].security.mode' '"none"'
ask PUT '/api/wifi/ssids.[2]' '{"id": 3, "enabled": false}'
ask PATCH '/api/gateway/led' '{"nightMode": {"from": "22:00"}}'
ask POST '/api/service/portForwarding.rules' '{"name": "garden-camera", "protocol": "tcp",
  "externalPort": 8555, "internalPort": 554, "internalClient": "192.168.1.40", "enabled": true}'
ask GET '/api/service/portForwarding?find=externalPort&value=8555'
ask DELETE '/api/service/portForwarding.rules.[0]'
ask GET /audit
ask POST /logout
ask GET '/api/wifi/ssids.[2].name'
show_changes
echo
echo "To see the page, run \"scripts/example.sh --serve\" and open $url/ in a browser."
echo "The smallest example is examples/typical_write.cpp: scripts/example.sh --small."
