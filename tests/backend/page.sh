#!/bin/sh
# The page of the web back end in a headless browser. PROGRAM [FOLDER for pictures of it]
# Run from the project's folder. Skipped (77) without a browser. After scripts/install-axe.sh the page must also be
# without serious faults for those who cannot see or point.
set -eu
for tool in chromium chromedriver curl jq; do
    command -v $tool >/dev/null || { echo "skipped: there is no $tool"; exit 77; }
done
work=$(mktemp -d)
port=$((10000 + $$ % 20000))
driver=http://127.0.0.1:$((port + 1))
. scripts/backend-functions.sh
prepare_gateway "$work/gateway" $port
start_backend "$1" "$work/gateway"
chromedriver --port=$((port + 1)) >"$work/driver.txt" 2>&1 &
driver_pid=$!
trap 'kill $backend_pid $driver_pid 2>/dev/null || true; wait; rm -rf "$work"' EXIT
trap 'exit 1' INT TERM

post() { # PATH [JSON], else from standard input
    curl --silent --fail-with-body --retry 120 --retry-connrefused --retry-delay 1 \
        --header 'Content-Type: application/json' --data "${2-@-}" "$driver/session$1"
}

emulate() { # NAME PARAMETERS of the browser's own protocol
    post "/$session/goog/cdp/execute" "{\"cmd\": \"Emulation.$1\", \"params\": $2}" >/dev/null
}

picture() { # FILE WIDTH HEIGHT light|dark
    emulate setDeviceMetricsOverride "{\"width\": $2, \"height\": $3, \"deviceScaleFactor\": 1, \"mobile\": true}"
    emulate setEmulatedMedia "{\"features\": [{\"name\": \"prefers-color-scheme\", \"value\": \"$4\"}]}"
    curl --silent "$driver/session/$session/screenshot" | jq -r .value | base64 -d >"$1"
}

session=$(post "" '{"capabilities": {"alwaysMatch": {"goog:chromeOptions":
    {"args": ["--headless=new", "--no-sandbox", "--disable-dev-shm-usage", "--window-size=1280,900"]}}}}' |
    jq -r .value.sessionId)
post "/$session/url" "{\"url\": \"http://127.0.0.1:$port/\"}" >/dev/null
post "/$session/timeouts" '{"script": 500000}' >/dev/null
axe=build/axe/node_modules/axe-core/axe.min.js
[ -f $axe ] || axe=
failures=$(cat ${axe:+"$axe"} tests/backend/page.js | jq -Rs '{script: ., args: []}' |
    post "/$session/execute/async" | jq -c .value)
if [ -n "${2-}" ]; then
    sleep 7 # what the page announces is gone by then
    picture "$2/desktop.png" 1100 677 light
    picture "$2/phone.png" 390 844 light
    picture "$2/dark.png" 1100 677 dark
fi
curl --silent --request DELETE "$driver/session/$session" >/dev/null
echo "failures${axe:+, with axe-core}: $failures"
stop_backend
[ "$failures" = '[]' ]
grep -q '"name":"garden"' "$work/gateway/data/wifi/wifi.ldb"
