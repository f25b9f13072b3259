#!/bin/sh
# The page of the web back end in a headless browser. PROGRAM [PICTURE.png WIDTH,HEIGHT]
# Run from the project's folder. Skipped (77) without a browser.
set -eu
for tool in chromium chromedriver curl jq; do
    command -v $tool >/dev/null || { echo "skipped: there is no $tool"; exit 77; }
done
work=$(mktemp -d)
port=$((10000 + $$ % 20000))
driver=http://127.0.0.1:$((port + 1))
. scripts/backend-functions.sh
prepare_gateway "$work/gateway" $port
keep_passwords "$work/gateway"
start_backend "$1" "$work/gateway"
chromedriver --port=$((port + 1)) >"$work/driver.txt" 2>&1 &
driver_pid=$!
trap 'kill $backend_pid $driver_pid 2>/dev/null || true; wait; rm -rf "$work"' EXIT

post() { # PATH JSON
    curl --silent --fail-with-body --retry 120 --retry-connrefused --retry-delay 1 \
        --header 'Content-Type: application/json' --data "$2" "$driver/session$1"
}

session=$(post "" '{"capabilities": {"alwaysMatch": {"goog:chromeOptions":
    {"args": ["--headless=new", "--no-sandbox", "--disable-dev-shm-usage", "--window-size='"${3-1280,1400}"'"]}}}}' |
    jq -r .value.sessionId)
post "/$session/url" "{\"url\": \"http://127.0.0.1:$port/\"}" >/dev/null
post "/$session/timeouts" '{"script": 500000}' >/dev/null
failures=$(post "/$session/execute/async" "$(jq -Rs '{script: ., args: []}' tests/backend/page.js)" |
    jq -c .value)
if [ -n "${2-}" ]; then
    curl --silent "$driver/session/$session/screenshot" | jq -r .value | base64 -d >"$2"
fi
curl --silent --request DELETE "$driver/session/$session" >/dev/null
echo "failures: $failures"
stop_backend
[ "$failures" = '[]' ]
grep -q '"name":"garden"' "$work/gateway/data/wifi/wifi.ldb"
