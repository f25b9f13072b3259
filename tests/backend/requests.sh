#!/bin/sh
# The web back end under requests good and bad. PROGRAM
# Run from the project's folder. Skipped (77) without curl.
set -eu
command -v curl >/dev/null || { echo "skipped: there is no curl"; exit 77; }
work=$(mktemp -d)
port=$((10000 + $$ % 20000))
url=http://127.0.0.1:$port
content_type=application/json
failures=0
condition='' # a header of every request
tag=''       # of the last answer that had one
. scripts/backend-functions.sh
trap 'kill $backend_pid 2>/dev/null || true; rm -rf "$work"' EXIT
trap 'exit 1' INT TERM

begin() { # NAME VALUE... of settings
    prepare_gateway "$work/gateway" $port
    [ -n "${must_change-}" ] || keep_passwords "$work/gateway"
    echo outside >"$work/outside.txt"
    ln -s "$work/outside.txt" "$work/gateway/www/link.txt"
    ln -s ../data "$work/gateway/www/data"
    echo hidden >"$work/gateway/www/.hidden"
    rm "$work/gateway/data/misc/misc_SCHEMA.ldb"
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
        --dump-header "$work/headers" ${condition:+--header "$condition"} \
        --write-out '%{http_code}' --request "$method" \
        ${body:+--data-binary "$body" --header "Content-Type: $content_type"} \
        ${token:+--header "Authorization: Bearer $token"} "$@" "$url$path"
}

expect() { # WHAT WANTED GOT
    [ "$2" = "$3" ] && return
    echo "$1: wanted $2, got $3"
    failures=$((failures + 1))
}

header() { # NAME of the last answer
    sed -n "s/^$1: \(.*\)\r\$/\1/p" "$work/headers"
}

check_one() { # STATUS METHOD PATH [BODY]
    expect "$2 $3 ${4-} $condition" "$1" "$(ask "$2" "$3" "${4-}")"
    etag=$(header ETag)
    tag=${etag:-$tag}
}

check() { # SECTION of requests.txt
    sed -n "/^# $1\$/,/^\$/{/^[0-9ws]/p;}" tests/backend/requests.txt >"$work/rows"
    [ -s "$work/rows" ] || expect "$1" "rows in requests.txt" none
    while read -r status method path body; do
        if [ "$status" = with ]; then
            condition=$(echo "$method $path $body" | sed "s|TAG|$tag|; s| *\$||")
        elif [ "$status" = says ]; then
            part=$method${path:+ $path}${body:+ $body}
            grep -qF "$part" "$work/answer" || expect "$1" "$part" "$(cat "$work/answer")"
        else
            check_one "$status" "$method" "$path" "$body"
        fi
    done <"$work/rows"
    condition=
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
check "nobody is logged in"
token=0000000000000000000000000000000000000000000000000000000000000000
check_one 401 GET "/api/wifi"

rm "$work/gateway/data/qos/qos.ldb"
echo nonsense >"$work/gateway/data/fac/fac.ldb"
expect "log in" 200 "$(login admin sample-admin-password)"
token=$(cat "$work/token")
check "an administrator, with qos.ldb removed and nonsense in fac.ldb"
ask GET /api/gateway >/dev/null
expect "hashes in an answer" 0 "$(grep -c '[$]y[$]' "$work/answer")"
ask GET '/api/wifi?find=id&value=1' >/dev/null
expect "hits of a number" 1 "$(grep -c '"bssid"' "$work/answer")"
head -c 70000 /dev/zero | tr '\0' '1' >"$work/long"
expect "a long body" 413 "$(ask PUT /api/misc/note "@$work/long")"
expect "a long chunked body" 413 "$(ask PUT /api/misc/note "@$work/long" \
    --header 'Transfer-Encoding: chunked')"
expect "a chunked body" 200 "$(ask PUT /api/wifi/country '"ZZ"' --header 'Transfer-Encoding: chunked')"
content_type=text/plain
expect "a body that is said to be text" 415 "$(ask PUT /api/wifi/country '"ZZ"')"
content_type=application/json
expect "too many headers" 431 "$(yes 'X: 0123456789' | head -20000 |
    ask GET / '' --header @- 2>/dev/null)"
expect "a long path" 414 "$(ask GET "/$(head -c 3000 "$work/long")")"
expect "an encoded location" 1 "$(ask POST /api/misc/help.topics '{"id":"x"}' --dump-header - |
    grep -c '^Location: /api/misc/help.topics.%5B[0-9]%5D')"
expect "what is allowed" 1 "$(ask GET /login '' --dump-header - | grep -c '^Allow: POST, OPTIONS')"
admin=$token token=
expect "a session by cookie" 200 "$(ask GET /api '' --cookie "SESSION=x; a=b; session=$admin")"
token=$admin

check "conditions"
expect "who may store an answer" "no-cache, private" "$(header Cache-Control)"

# A user sees less, and changes nothing.
expect "log in as a user" 200 "$(login home sample-home-password)"
expect "who may store a token" no-store "$(header Cache-Control)"
token=$(cat "$work/token")
expect "what an administrator has stored" 200 "$(ask GET /api/wifi '' --header "If-None-Match: $tag")"
check "a user"
for type in gateway wifi network security service mediashare misc; do
    ask GET /api/$type >>"$work/statuses"
    expect "secrets of $type" "" "$(grep -E '"sample-.*-(password|key)|"passphrase"|[$]y[$]|"00000000"' "$work/answer")"
done
check "a user logs out"

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
check_one 200 GET "/api/wifi"
stop_backend

# A session that has an old view of an array does not change another element than it sees.
begin duplicate_login_enable '"1"'
expect "log in" 200 "$(login admin sample-admin-password)"
first=$(cat "$work/token")
expect "log in again" 200 "$(login admin sample-admin-password)"
token=$(cat "$work/token")
check "changes in another session"
token=$first
check "an index into an array that has changed since"
expect "rules and mappings that are left" 5 "$(grep -c externalPort "$work/gateway/data/service/service.ldb")"
stop_backend

# The sample's passwords open nothing but the change of the password. A guess at the old one counts, and what cannot
# be recorded counts as well; so does the audit's line.
must_change=1
begin duplicate_login_enable '"1"'
expect "log in" 200 "$(login admin sample-admin-password)"
expect "a cookie" 1 "$(grep -c '^Set-Cookie: session=[0-9a-f]*; Path=/; HttpOnly; SameSite=Strict.$' "$work/headers")"
other=$(cat "$work/token")
expect "log in again" 200 "$(login admin sample-admin-password)"
token=$(cat "$work/token")
yes '{"what": "kept"}' | head -c 65520 >"$work/gateway/audit.jsonl"
check "a password that must be changed"
expect "the size of the audit" yes "$([ "$(wc -c <"$work/gateway/audit.jsonl")" -lt 4096 ] && echo yes)"
must_change=
own=$token
changes=
for new in first-password second-password; do
    ask PUT /api/me/password "{\"old\": \"new-admin-password\", \"new\": \"$new\"}" >"$work/$new" &
    changes="$changes $!"
done
# shellcheck disable=SC2086 # two numbers
wait $changes
expect "two who replace the same password" 1 "$(grep -l 204 "$work"/*-password | wc -l)"
expect "the old password" 401 "$(login admin sample-admin-password)"
token=$other
check "a session that a new password has ended"
rm "$work/gateway/.loginrecord.cfg"
mkdir "$work/gateway/.loginrecord.cfg"
for _ in 1 2 3 4 5 6 7 8 9 10; do
    expect "a guess that cannot be recorded" 401 "$(login admin guess)"
done
expect "a login while locked out" 429 "$(login admin new-admin-password)"
expect "another one" 429 "$(login admin new-admin-password)"
expect "lock-outs in the audit" 1 "$(grep -c '"what": "locked out"' "$work/gateway/audit.jsonl")"
token=$own
expect "the audit" 200 "$(ask GET /audit)"
for part in '"what": "kept"' '"what": "password"' '"what": "login refused"' '"path": "wifi\/country"' '"path": "guest"'; do
    grep -qF "$part" "$work/answer" || expect "the audit" "$part" "$(cat "$work/answer")"
done
expect "secrets in the audit" "" "$(grep -E 'password-|admin-password|guess' "$work/gateway/audit.jsonl")"
rm "$work/gateway/audit.jsonl"
mkdir "$work/gateway/audit.jsonl"
expect "a change without audit" 200 "$(ask PUT /api/wifi/country '"XX"')"
grep -q 'cannot be written to the audit' "$work/gateway/BE.log" || expect "the log" "a line" none
stop_backend
export LSAN_OPTIONS=detect_leaks=0             # the library keeps an array then
start_backend "$program_file" "$work/gateway" # which has no room for the record from the beginning
unset LSAN_OPTIONS
for _ in 1 2 3 4 5 6 7 8 9 10; do
    expect "a guess without a record" 401 "$(login admin guess)"
done
expect "a login while locked out" 429 "$(login admin new-admin-password)"
stop_backend

# A second login ends the first session, and time ends every one.
begin duplicate_login_enable '"0"'
expect "log in" 200 "$(login admin sample-admin-password)"
token=$(cat "$work/token")
expect "log in again" 200 "$(login admin sample-admin-password)"
check_one 401 GET "/api/wifi"
stop_backend
sed -i 's|"session": 24|"session": 0|' "$work/gateway/backend.json"
start_backend "$program_file" "$work/gateway"
expect "log in" 200 "$(login admin sample-admin-password)"
token=$(cat "$work/token")
check_one 401 GET "/api/wifi"
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

# A type that is busy, here being read from a pipe, is changed later, and read meanwhile.
begin enable_multidb_mode 0
busy="$work/gateway/data/security/security.ldb"
rm "${busy%.ldb}_SCHEMA.ldb"
mkfifo "$work/pipe"
ln -f "$work/pipe" "$busy"
expect "log in" 200 "$(login admin sample-admin-password)"
token=$(cat "$work/token")
writers=
for writer in 1 2; do
    curl --silent --output /dev/null --dump-header "$work/headers$writer" --request DELETE \
        --header "Authorization: Bearer $token" "$url/api/security/none" &
    writers="$writers $!"
done
tries=0
until grep -qs '^Retry-After: 1' "$work/headers1" "$work/headers2" || [ $tries -gt 3000 ]; do
    tries=$((tries + 1))
    sleep 0.1
done
expect "one has to come back" 1 "$(cat "$work"/headers? | grep -c '^HTTP/1.1 503')"
echo '{"a": 1}' >"$work/new"
mv "$work/new" "$busy"
check "a type that is busy"
echo '{"a": 1}' >"$work/pipe"
# shellcheck disable=SC2086 # two numbers
wait $writers
check "a type that was busy"

stop_backend

# What is damaged is not the client's fault, and can be put right. A crash ends the process.
begin enable_bypass_token 1
echo '{"users": {}, "led": 5, "about": {}}' >"$work/gateway/data/gateway/gateway.ldb"
token=
check "gateway.ldb is damaged"
sed 's|"brightness":.*|"brightness":700,|' examples/gateway/data/gateway/gateway.ldb >"$work/gateway/data/gateway/gateway.ldb"
sed -i 's|"leaseTime":7200|"leaseTime":7|' "$work/gateway/data/network/network.ldb"
check "a value in gateway.ldb and one in network.ldb are damaged"
echo nonsense >"$work/gateway/data/gateway/GATEWAY_LOGIN_REQ_SCHEMA.ldb"
echo nonsense >"$work/gateway/data/gateway/gateway_SCHEMA.ldb"
check "two schemas are damaged"
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
