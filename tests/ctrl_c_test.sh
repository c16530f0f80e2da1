#!/usr/bin/env bash
# Ctrl-C, which Wine delivers on SIGINT: the broker ends by itself, waiting or just having served,
# with its summary. BIN is where the programs are.
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
output=$(mktemp)
broker=
trap '[ -z "$broker" ] || kill -KILL "$broker" 2>/dev/null; rm -f "$output"' EXIT

for requests in 0 1; do
  "$root/cmake/run-wine.sh" "$BIN/SceneBroker.exe" "$root/tools/scenes/login.json" >"$output" &
  broker=$!
  until grep -q '^ready' "$output"; do
    kill -0 "$broker" || { echo "the broker did not start"; exit 1; }
    sleep 0.1
  done
  for ((i = 0; i < requests; i++)); do
    "$root/cmake/run-wine.sh" "$BIN/tessel.exe" at 320,134 --scheme=tailored \
      --window='Café Größe – Sign in' --address=http://shop.example/portal/login.html
  done
  kill -INT "$broker"
  code=0
  wait "$broker" || code=$?
  broker=
  [ "$code" -eq 0 ] || { echo "the broker ended with $code"; exit 1; }
  summary=$(tr -d '\r' <"$output" | sed -n '/^handed out/,$p' | paste -sd ,)
  expected="handed out: $requests,released: $requests,still held: 0"
  [ "$summary" = "$expected" ] || { echo "$summary, not $expected"; exit 1; }
done
