#!/usr/bin/env bash
# run.sh BUILD: tests Ctrl-C. The test sends SIGINT, which Wine delivers as Ctrl-C. A broker must then print
# its summary and end, whether it has served a request or not. If a broker still waits for a client that does
# not read its answer, a second Ctrl-C must end the broker at once, without the summary. Ctrl-C must also end
# tessel at once while it waits for a call. But `tessel tap`, which stands between clients and a broker and
# records each request with its answer, must first finish the current request, so that the recording has all
# requests that the broker has served.
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

# tessel must wait, because the broker is busy with another client. The next test starts a new busy broker,
# because it must send Ctrl-C before the broker gives up its client.
start_busy_broker
: >"$work/tessel.txt"  # an earlier run may have left this file
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

start_broker "$bin" $address --scheme http
rm -f "$work/tap.jsonl"
: >"$work/tap.txt"
"$wine" "$bin/tessel.exe" tap --address $address --scheme http --record "Z:$work/tap.jsonl" >"$work/tap.txt" &
tap=$!
window=$(fact window)
until grep -q ^ready "$work/tap.txt"; do kill -0 "$tap"; sleep 0.1; done
while "$wine" "$bin/tessel.exe" tree --window="$window" --address=$address; do :; done >"$work/clients.txt" 2>&1 &
clients=$!
until grep -q ^served "$work/tap.txt"; do sleep 0.1; done
# While the broker is suspended, `tessel tap` most likely waits for an answer. So Ctrl-C comes during this wait.
kill -STOP "$broker"
sleep 1
kill -INT "$tap"
sleep 0.2
kill -CONT "$broker"
wait "$tap" || fail "the tap ended with $?"
wait "$clients"
kill -INT "$broker"
wait "$broker"
served=$(grep -c ^served "$work/broker.txt")
[ "$(tail -n +2 "$work/tap.jsonl" | wc -l)" = "$served" ] || fail "the tap has not recorded $served exchanges"
grep -q "^recorded: $served" "$work/tap.txt" || fail "$(tail -n 1 "$work/tap.txt"), not $served"
