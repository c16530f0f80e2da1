# Sourced by the tests that are shell scripts: a SceneBroker that serves the sign-in form under an
# address of the test's own. The test sets `work`, a folder of its own.
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
trap 'kill -KILL $(jobs -p) 2>/dev/null || true' EXIT

fail() { echo "FAILED: $*" >&2; exit 1; }

# need PROGRAM PACKAGE
need() { command -v "$1" >/dev/null || fail "no $1: install $2"; }

# start_broker FOLDER ADDRESS: the programs' folder; the address takes the place of the form's own. A
# root in front of the form's gives that one a position other than 0.
start_broker() {
  sed "s#http://shop.example/portal/login.html#$2#
    s#\"elements\": \[#&{\"id\": \"first\", \"rect\": [0, 0, 1, 1]},#" \
    "$root/tools/scenes/login.json" >"$work/scene.json"
  # Here, not only by the job, which may come after the first look into it.
  : >"$work/broker.txt"
  "$root/cmake/run-wine.sh" "$1/SceneBroker.exe" "Z:$work/scene.json" >"$work/broker.txt" &
  broker=$!
  wait_for ready
}

# wait_for LINE: until the broker has printed one that begins so.
wait_for() {
  until grep -q "^$1" "$work/broker.txt"; do
    kill -0 "$broker" || fail "the broker ended before '$1'"
    sleep 0.1
  done
}

# fact KEY: what the broker prints behind it.
fact() { sed -n "/^$1: /{s///;s/\r\$//;p;q}" "$work/broker.txt"; }

summary() { tr -d '\r' <"$work/broker.txt" | sed -n '/^handed out/,$p' | paste -sd ,; }

# stop_broker COUNT: it must have handed out so many objects and have got each of them back.
stop_broker() {
  kill -INT "$broker"
  wait "$broker" || fail "the broker ended with $?"
  local expected="handed out: $1,undelivered: 0,released: $1,still held: 0"
  [ "$(summary)" = "$expected" ] || fail "$(summary), not $expected"
}
