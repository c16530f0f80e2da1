#!/usr/bin/env bash
# run.sh BUILD: `tessel log` must set the log level, and restore it after Ctrl-C. The test sends SIGINT, which
# Wine delivers as Ctrl-C.
set -eu
work=$1/log-level-test
. "$(dirname "${BASH_SOURCE[0]}")/../support/broker.sh"
mkdir -p "$work"
wine=$root/cmake/run-wine.sh
variable=('HKCU\Environment' /v TESSEL_LOG_LEVEL)

level() { "$wine" reg query "${variable[@]}" | tr -d '\r' | sed -n 's/.*REG_SZ *//p'; }

"$wine" reg add "${variable[@]}" /d ERROR /f
: >"$work/log.txt"
"$wine" "$1/bin/tessel.exe" log --level=INFO 2>"$work/log.txt" &
log=$!
until grep -q 'log level is INFO' "$work/log.txt"; do
  kill -0 "$log" || fail "tessel log ended: $(cat "$work/log.txt")"
  sleep 0.1
done
[ "$(level)" = INFO ] || fail "tessel log did not set the level: $(level)"

code=0
kill -INT "$log"
wait "$log" || code=$?
[ "$code" -eq 130 ] || fail "tessel log ended with $code after Ctrl-C"
[ "$(level)" = ERROR ] || fail "tessel log did not restore the level: $(level)"
"$wine" reg delete "${variable[@]}" /f
