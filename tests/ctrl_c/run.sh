#!/usr/bin/env bash
# run.sh BUILD: tests Ctrl-C. The test sends SIGINT, which Wine delivers as Ctrl-C. A broker must then print
# its summary and end, whether it has served a request or not. If a broker still waits for a client that does
# not read its answer, a second Ctrl-C must end the broker at once, without the summary. Ctrl-C must also end
# tessel at once while it waits for a call.
set -eu
work=$1/ctrl-c-test
. "$(dirname "${BASH_SOURCE[0]}")/../support/broker.sh"
mkdir -p "$work"
bin=$1/bin
wine=$root/cmake/run-wine.sh
address=http://ctrl-c.example/

start_broker "$bin" $address
stop_broker 0

start_broker "$bin" $address
"$wine" "$bin/tessel.exe" at 320,134 --scheme=tailored --window="$(fact window)" --address=$address
stop_broker 1

# Starts a broker that waits for a client that does not read its answer.
start_busy_broker() {
  start_broker "$bin" $address
  "$wine" "$bin/test_parts.exe" mute "$(fact pipe)" &
  mute=$!
  wait_for served
}

# The broker is busy, so the call waits. Wine may pass Ctrl-C on to the broker, so this broker is not used again.
start_busy_broker
"$wine" "$bin/tessel.exe" at 320,134 --scheme=tailored --window="$(fact window)" --address=$address \
  2>"$work/tessel.txt" &
tessel=$!
until grep -q "waiting for the broker" "$work/tessel.txt"; do
  kill -0 "$tessel" || fail "tessel ended before Ctrl-C"
  sleep 0.1
done
kill -INT "$tessel"
code=0
wait "$tessel" || code=$?
[ "$code" = 130 ] || fail "tessel ended with $code"
grep -q "^tessel: ended by Ctrl-C; nothing was released" "$work/tessel.txt" || fail "tessel does not say why it ended"
kill -KILL "$broker" "$mute" 2>/dev/null || true
wait "$broker" "$mute" || true

start_busy_broker
signals=0
while kill -INT "$broker" 2>/dev/null; do
  signals=$((signals + 1))
  sleep 0.2
done
[ "$signals" -gt 1 ] || fail "the broker did not wait for its client"
[ -z "$(summary)" ] || fail "the broker was not ended by a second Ctrl-C: $(summary)"
