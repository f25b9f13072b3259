#!/bin/sh
# The web back end under requests good and bad. PROGRAM
# Run from the project's folder. Skipped (77) without curl.
set -eu
command -v curl >/dev/null || { echo "skipped: there is no curl"; exit 77; }
work=$(mktemp -d)
port=$((10000 + $$ % 20000))
url=http://127.0.0.1:$port
failures=0
. scripts/backend-functions.sh
trap 'kill $backend_pid 2>/dev/null || true; rm -rf "$work"' EXIT

begin() { # NAME VALUE... of settings
    prepare_gateway "$work/gateway" $port
    echo outside >"$work/outside.txt"
    ln -s "$work/outside.txt" "$work/gateway/www/link.txt"
    ln -s ../data "$work/gateway/www/data"
    echo hidden >"$work/gateway/www/.hidden"
    while [ $# -gt 0 ]; do
        set_setting "$work/gateway" "$1" "$2"
        shift 2
    done
    start_backend "$program_file" "$work/gateway"
}

# Asks and prints the status; the answer is left in a file. METHOD PATH [BODY [OPTION...]]
ask() {
    method=$1 path=$2 body=${3-}
    shift $(($# < 3 ? $# : 3))
    curl --silent --path-as-is --globoff --max-time 300 --output "$work/answer" \
        --write-out '%{http_code}' --request "$method" ${body:+--data-binary "$body"} \
        ${token:+--header "Authorization: Bearer $token"} "$@" "$url$path"
}

expect() { # WHAT WANTED GOT
    [ "$2" = "$3" ] && return
    echo "$1: wanted $2, got $3"
    failures=$((failures + 1))
}

# Lines of: status method path [body]
check() {
    while read -r status method path body; do
        [ -n "$status" ] && expect "$method $path $body" "$status" "$(ask "$method" "$path" "$body")"
    done
}

login() { # USER PASSWORD: the status, and the token in a file
    token=""
    ask POST /login "{\"username\": \"$1\", \"password\": \"$2\"}"
    sed -n 's/.*"token": "\([0-9a-f]*\)".*/\1/p' "$work/answer" >"$work/token"
}

program_file=$1
set -- # no arguments left for the functions
begin duplicate_login_enable '"1"'

token=
check <<'END'
200 GET /
200 GET /app.js
405 POST /
404 GET /nothing
404 GET /../backend.json
404 GET /%2e%2e/backend.json
404 GET /..%2fbackend.json
404 GET //etc/passwd
404 GET /link.txt
404 GET /data/gateway/gateway.ldb
404 GET /.hidden
400 GET /index.html%00.png
400 GET /%ff
401 GET /api
401 GET /api/wifi
401 PUT /api/wifi/country "XX"
401 GET /api/../api/wifi
401 GET /log
401 POST /logout
400 POST /login
400 POST /login {}
400 POST /login {"username":"admin"}
400 POST /login {"username":"admin","password":5}
400 POST /login {"username":"admin","password":"x","role":"administrator"}
400 POST /login {"username":"admin","password":"x"}{}
401 POST /login {"username":"admin","password":"x"}
401 POST /login {"username":"nobody","password":"x"}
401 POST /login {"username":"service","password":"sample-service-password"}
405 PATCH /login
404 GET /login
END
token=0000000000000000000000000000000000000000000000000000000000000000
check <<'END'
401 GET /api/wifi
END

rm "$work/gateway/data/qos/qos.ldb"
echo nonsense >"$work/gateway/data/fac/fac.ldb"
expect "log in" 200 "$(login admin sample-admin-password)"
token=$(cat "$work/token")
check <<'END'
404 GET /api/qos
404 PUT /api/qos/mode "x"
500 GET /api/fac
200 GET /api
200 GET /api/wifi
200 GET /api/wifi/
200 GET /api/wifi/ssids.%5B0%5D.name
404 GET /api/none
404 GET /api/wifi/none
404 GET /api/wifi/ssids.[99]
400 GET /api/wifi/ssids.[x]
400 GET /api/wifi/ssids.[0
400 GET /api/wifi/ssids.[00]
400 GET /api/wifi/a..b
400 GET /api/wifi/a.b.c.d.e.f.g.h.i.j.k.l.m
403 GET /api/gateway/users.[0].password
400 GET /api/gateway/users.[0].password%00x
403 GET /api/gateway?find=password&value=x
400 GET /api/gateway?find=password%00&value=x
400 GET /api/wifi?find=name&value=home-5%00
400 GET /api/wifi?find=name
200 GET /api/wifi?find=name&value=home-5
200 GET /api/wifi?find=id&value=1
200 GET /log
200 PUT /api/wifi/country "YY"
201 PUT /api/misc/note "text"
204 DELETE /api/misc/note
404 DELETE /api/misc/note
404 PUT /api/misc/no.such.place 1
404 PUT /api/wifi/ssids.[99] {"id":1}
400 PUT /api/wifi/country 5
400 PUT /api/wifi/country null
400 PUT /api/wifi/country nonsense
400 PUT /api/wifi/country "a" "b"
400 PUT /api/wifi/country "a\u0000b"
400 PUT /api/misc/number NaN
400 PUT /api/misc/number [1,-Infinity]
400 PUT /api/misc/number 1e999
400 PUT /api/misc/%ff%fe 1
400 PUT /api/misc/%c0%af 1
201 PUT /api/misc/%c3%bc 1
204 DELETE /api/misc/%c3%bc
400 PUT /api/misc/a-name-that-no-handle-has-room-for 1
400 PUT /api/wifi/country [[[[[[[[[[[[[[[[[[1]]]]]]]]]]]]]]]]]]
400 PUT /api/wifi/ssids.[0].security.mode "none"
400 PUT /api/wifi/ssids.[0] {"id":1,"none":2}
400 PUT /api/wifi/ssids []]
400 DELETE /api/wifi/ssids.[0].name
400 DELETE /api/gateway/led.brightness
400 DELETE /api/network/lan
200 PUT /api/gateway/led {"brightness":7}
400 PUT /api/gateway/led.brightness 101
405 PUT /api/wifi {}
405 DELETE /api/wifi
403 PUT /api/gateway/users.[0].role "user"
403 POST /api/gateway/users {"name":"thief"}
403 DELETE /api/gateway/users
400 POST /api/service/portForwarding.rules {"name":"x"}
201 POST /api/service/portForwarding.rules {"name":"x","protocol":"tcp","externalPort":1,"internalPort":1,"internalClient":"192.168.1.2","enabled":true}
204 DELETE /api/service/portForwarding.rules.[0]
409 POST /api/service/wol.hosts {"id":1,"name":"x"}
201 POST /api/service/wol.hosts {"id":2147483647,"name":"x"}
409 POST /api/service/wol.hosts {"name":"x"}
405 POST /api/wifi/country "x"
404 POST /api/wifi/none 1
END
ask GET /api/gateway >/dev/null
expect "hashes in an answer" 0 "$(grep -c 'sha256' "$work/answer")"
ask GET '/api/wifi?find=id&value=1' >/dev/null
expect "hits of a number" 1 "$(grep -c '"bssid"' "$work/answer")"
head -c 70000 /dev/zero | tr '\0' '1' >"$work/long"
expect "a long body" 413 "$(ask PUT /api/misc/note "@$work/long")"
expect "a long chunked body" 413 "$(ask PUT /api/misc/note "@$work/long" \
    --header 'Transfer-Encoding: chunked')"
expect "a chunked body" 200 "$(ask PUT /api/wifi/country '"ZZ"' --header 'Transfer-Encoding: chunked')"
expect "a form" 415 "$(ask PUT /api/misc/note x --header 'Content-Type: multipart/form-data; boundary=x')"
expect "too many headers" 400 "$(yes 'X: 0123456789' | head -20000 |
    ask GET / '' --header @- 2>/dev/null)"
expect "a long path" 414 "$(ask GET "/$(head -c 3000 "$work/long")")"

# A user sees less, and changes nothing.
admin=$token
expect "log in as a user" 200 "$(login home sample-home-password)"
token=$(cat "$work/token")
check <<'END'
200 GET /api/wifi
403 GET /api/wifi/ssids.[0].security.passphrase
403 GET /api/wifi?find=passphrase&value=x
403 PUT /api/wifi/country "XX"
403 GET /log
END
for type in gateway wifi network security service mediashare misc; do
    ask GET /api/$type >>"$work/statuses"
    expect "secrets of $type" "" "$(grep -E '"sample-.*-(password|key)|"passphrase"|sha256[$]|"00000000"' "$work/answer")"
done
check <<'END'
204 POST /logout
401 GET /api/wifi
END

# Ten attempts, then nobody gets in from this address, by no password.
# An unknown user and one who is disabled have been tried above; who has an account gets no more guesses.
for _ in 1 2 3 4; do
    expect "a guess" 401 "$(login admin guess)"
done
expect "a login in between" 200 "$(login home sample-home-password)"
for _ in 5 6 7 8; do
    expect "a guess" 401 "$(login admin guess)"
done
expect "a locked-out guess" 429 "$(login admin guess)"
expect "a locked-out login" 429 "$(login admin sample-admin-password)"
grep -q 'wait 1 min' "$work/answer" || expect "the minutes" "wait 1 min" "$(cat "$work/answer")"
token=$admin
check <<'END'
200 GET /api/wifi
END
stop_backend

# A session that has an old view of an array does not change another element than it sees.
begin duplicate_login_enable '"1"'
expect "log in" 200 "$(login admin sample-admin-password)"
first=$(cat "$work/token")
expect "log in again" 200 "$(login admin sample-admin-password)"
token=$(cat "$work/token")
check <<'END'
204 DELETE /api/service/portForwarding.rules.[0]
END
token=$first
check <<'END'
409 DELETE /api/service/portForwarding.rules.[1]
204 DELETE /api/service/portForwarding.rules.[1]
END
expect "rules and mappings that are left" 5 "$(grep -c externalPort "$work/gateway/data/service/service.ldb")"
stop_backend

# A second login ends the first session, and time ends every one.
begin duplicate_login_enable '"0"'
expect "log in" 200 "$(login admin sample-admin-password)"
token=$(cat "$work/token")
expect "log in again" 200 "$(login admin sample-admin-password)"
check <<'END'
401 GET /api/wifi
END
stop_backend
sed -i 's|"session": 24|"session": 0|' "$work/gateway/backend.json"
start_backend "$program_file" "$work/gateway"
expect "log in" 200 "$(login admin sample-admin-password)"
token=$(cat "$work/token")
check <<'END'
401 GET /api/wifi
END
stop_backend

refuses_to_start() { # WHAT REASON
    status=0
    (cd "$work/second" && timeout 300 "$program" >/dev/null 2>"$work/reason") || status=$?
    expect "$1" 1 "$status"
    expect "the reason for $1" 1 "$(grep -c "$2" "$work/reason")"
}

# A port that is taken ends the start, also behind one that is free.
begin enable_multidb_mode 0
prepare_gateway "$work/second" "$((port + 1)),$port"
refuses_to_start "a port that is taken" "port $port"
stop_backend

# So does a configuration that is not an object; the library would take its defaults.
settings="$work/second/backend.json"
for content in "" '[]' '{"webserver_ports": "8081"' '"text"' null nonsense; do
    printf '%s' "$content" >"$settings"
    refuses_to_start "the configuration '$content'" backend.json
done
rm "$settings"
refuses_to_start "no configuration" backend.json
mkdir "$settings"
refuses_to_start "a folder for a configuration" backend.json

# A type that is busy, here being read from a pipe, is asked for again.
begin enable_multidb_mode 0
rm "$work/gateway/data/misc/misc.ldb"
mkfifo "$work/gateway/data/misc/misc.ldb"
expect "log in" 200 "$(login admin sample-admin-password)"
token=$(cat "$work/token")
readers=
for reader in 1 2; do
    curl --silent --output /dev/null --dump-header "$work/headers$reader" \
        --header "Authorization: Bearer $token" "$url/api/misc" &
    readers="$readers $!"
done
tries=0
until grep -qs '^Retry-After: 1' "$work/headers1" "$work/headers2" || [ $tries -gt 3000 ]; do
    tries=$((tries + 1))
    sleep 0.1
done
expect "one has to come back" 1 "$(cat "$work"/headers? | grep -c '^HTTP/1.1 503')"
echo '{"a": 1}' >"$work/gateway/data/misc/misc.ldb"
# shellcheck disable=SC2086 # two numbers
wait $readers
check <<'END'
200 GET /api/misc
200 GET /api/wifi
END

stop_backend

# What is damaged is not the client's fault; a valid message replaces it. A crash ends the process.
begin enable_bypass_token 1
echo '{"users": {}, "led": 5, "about": {}}' >"$work/gateway/data/gateway/gateway.ldb"
token=
check <<'END'
500 POST /login {"username":"admin","password":"sample-admin-password"}
400 POST /login {}
500 GET /api/gateway/led
400 PUT /api/gateway/led {"brightness":700}
200 PUT /api/gateway/led {"enabled":true,"brightness":7,"nightMode":{"enabled":false,"from":"22:00","to":"06:00"}}
END
echo nonsense >"$work/gateway/data/gateway/GATEWAY_LOGIN_REQ_SCHEMA.ldb"
echo '["form"]' >"$work/gateway/data/gateway/GATEWAY_LED_UPDATE_REQ.ldb"
check <<'END'
500 POST /login {}
500 PUT /api/gateway/led {"brightness":7}
END
kill -SEGV "$backend_pid"
tries=0
until [ "$(ask GET /)" = 000 ] || [ $tries -gt 100 ]; do
    tries=$((tries + 1))
    sleep 0.1
done
kill "$backend_pid" 2>/dev/null || true
wait "$backend_pid" && expect "a crash" "a status that says so" 0
[ $failures = 0 ] && echo "all as wanted"
exit $failures
