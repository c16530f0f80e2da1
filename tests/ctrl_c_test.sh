#!/usr/bin/env bash
# Ctrl-C, which Wine delivers on SIGINT: the broker ends by itself, waiting or just having served,
# with its summary; while it waits for a client that does not read, the next Ctrl-C ends it at once.
# BIN is where the programs are.
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
output=$(mktemp)
broker=
client=
trap 'kill -KILL $broker $client 2>/dev/null || true; rm -f "$output"' EXIT

run() { exec "$root/cmake/run-wine.sh" "$BIN/$1.exe" "${@:2}"; }

fail() {
  echo "$1"
  exit 1
}

# wait_for LINE: until the broker has printed one that begins so.
wait_for() {
  until grep -q "^$1" "$output"; do
    kill -0 "$broker" || fail "the broker ended before '$1'"
    sleep 0.1
  done
}

start() {
  run SceneBroker "$root/tools/scenes/login.json" >"$output" &
  broker=$!
  wait_for ready
}

summary() { tr -d '\r' <"$output" | sed -n '/^handed out/,$p' | paste -sd ,; }

for requests in 0 1; do
  start
  for ((i = 0; i < requests; i++)); do
    (run tessel at 320,134 --scheme=tailored --window='Café Größe – Sign in' \
      --address=http://shop.example/portal/login.html)
  done
  kill -INT "$broker"
  code=0
  wait "$broker" || code=$?
  broker=
  [ "$code" -eq 0 ] || fail "the broker ended with $code"
  expected="handed out: $requests,undelivered: 0,released: $requests,still held: 0"
  [ "$(summary)" = "$expected" ] || fail "$(summary), not $expected"
done

start
run test_parts mute "$(tr -d '\r' <"$output" | sed -n 's/^pipe: //p')" &
client=$!
wait_for served
signals=0
while kill -INT "$broker" 2>/dev/null; do
  signals=$((signals + 1))
  sleep 0.2
done
broker=
[ "$signals" -gt 1 ] || fail "the broker did not wait for its client"
[ -z "$(summary)" ] || fail "the broker outlived $signals times Ctrl-C: $(summary)"
