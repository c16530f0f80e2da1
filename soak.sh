#!/usr/bin/env bash
# Wears the module out: clients against brokers that fail at random, a host under hostile clients.
set -euo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/cmake/prepare.sh"

usage() {
  cat <<'TEXT'
usage: ./soak.sh [--seed N] [MINUTES]

Installs what is missing, builds, and runs under Wine: two client processes with
four threads each against two brokers that are killed, suspended, ended in order
and started again, and whose place others take that talk nonsense, vanish, hang up,
are slow or never answer; and a host whose channel raw clients misuse and another
thread closes at every moment. Each call may end only with what its broker's doings
deserve that it ran through; while a broker serves undisturbed, that is one code.
Ends with a verdict, and a code other than 0 when something was lost.

  MINUTES   of the clients' run, 5 if absent, behind a warm-up of one or two; the host
            has 5000 rounds
  --seed N  what the faults follow; printed by every run
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

mkdir -p "$ROOT/build"
require_packages
build mingw soak
# A prefix of its own, without the launcher that suites put into theirs.
hold_wine "$ROOT/build/wine-soak"
export TESSEL_WINEPREFIX=$ROOT/build/wine-soak

failed=0
step "Clients against failing brokers"
ends_with_word '^verdict of the clients: nothing lost' \
  "$ROOT/cmake/run-wine.sh" "$BIN/soak_conductor.exe" "$minutes" "$seed" || failed=1
step "A host under hostile clients"
ends_with_word '^verdict of the host: nothing lost' \
  "$ROOT/cmake/run-wine.sh" "$BIN/soak_host.exe" 5000 "$seed" || failed=1
[ "$failed" -eq 0 ] || die "something was lost (seed $seed)"
step "Nothing was lost (seed $seed)"
