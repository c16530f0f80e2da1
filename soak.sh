#!/usr/bin/env bash
# The endurance run: clients call brokers that fail at random, threads share handles, and a host serves hostile
# clients.
set -euo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/cmake/prepare.sh"

usage() {
  cat <<'TEXT'
usage: ./soak.sh [--seed N] [MINUTES]

Installs what is missing, builds, and runs three parts under Wine.

Clients: two processes with four threads each call two brokers. The brokers are
killed, suspended, ended in order and started again, also with each fault of
SceneBroker's option --fault. Impostors take their place that talk nonsense. Each
call may end only with a code that its broker's state explains. Each fault must
happen at least once.

Handles: threads share handles of the C interface. They use them and free them at
random. The broker must get back every element.

Host: raw clients misuse its channel while another thread closes it at every
moment.

Each part ends with a verdict: nothing may be lost, no answer wrong, and each
process must hold at the end what it held after its warm-up. The script's code is
not 0 when a verdict is bad.

  MINUTES   for all parts together, without the build; 5 if absent. The clients
            get six tenths, the handles one tenth, the host the rest. This includes
            the warm-ups: about two minutes for the clients and half a minute for the
            host. After its warm-up each part runs for 10 seconds at least, so less
            than 2 minutes still take almost 2.
  --seed N  for the random faults; printed by every run
  --help    this text
TEXT
}

minutes=5
seed=$((RANDOM * 32768 + RANDOM))
while [ $# -gt 0 ]; do
  case $1 in
    -h | --help) usage; exit 0 ;;
    --seed)
      [[ ${2:-} =~ ^[0-9]+$ ]] || { usage >&2; exit 2; }
      seed=$2
      shift ;;
    *)
      [[ $1 =~ ^[0-9]+(\.[0-9]+)?$ ]] || { usage >&2; exit 2; }
      minutes=$1 ;;
  esac
  shift
done

# calculate EXPRESSION: prints the value of the expression, or 0 if the value is negative.
calculate() { awk "BEGIN { value = $1; print (value > 0 ? value : 0) }"; }

work=$ROOT/build/soak
mkdir -p "$work"
. "$ROOT/tests/support/broker.sh"
require_packages
build mingw soak
# Use a separate Wine prefix, because the tests put a stand-in for the broker launcher into their prefix.
hold_wine "$ROOT/build/wine-soak"
export TESSEL_WINEPREFIX=$ROOT/build/wine-soak

failed=0
begin=$SECONDS
step "Clients against failing brokers"
ends_with_word '^verdict of the clients: nothing lost' \
  "$ROOT/cmake/run-wine.sh" "$BIN/soak_conductor.exe" "$(calculate "$minutes * 0.6")" "$seed" || failed=1
step "Threads that share handles of the C interface"
serve "$BIN" "$ROOT/tools/scenes/login.json"
ends_with_word '^verdict of the handles: nothing lost' "$ROOT/cmake/run-wine.sh" "$BIN/soak_shared_handles.exe" \
  "$(fact window)" "$(fact address)" "$(calculate "($minutes * 6 > 10) ? $minutes * 6 : 10")" "$seed" || failed=1
kill -INT "$broker"
wait "$broker" || failed=1
step "The broker of the handles: $(summary)"
[[ $(summary) == *,"still held: 0" ]] || failed=1
step "A host under hostile clients"
ends_with_word '^verdict of the host: nothing lost' \
  "$ROOT/cmake/run-wine.sh" "$BIN/soak_host.exe" "$(calculate "$minutes - $((SECONDS - begin)) / 60")" "$seed" || failed=1
[ "$failed" -eq 0 ] || die "something was lost (seed $seed)"
step "Nothing was lost (seed $seed)"
