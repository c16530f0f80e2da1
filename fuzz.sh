#!/usr/bin/env bash
# Runs the fuzzers, which look for inputs that break the portable code (json/ and memory/).
set -euo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/cmake/prepare.sh"

fuzzers=(reader_utf8 reader_utf16 utf writer)
usage() {
  cat <<TEXT
usage: ./fuzz.sh [SECONDS] [FUZZER...]

Installs missing packages, builds the fuzzers natively with Clang's libFuzzer
and the address and undefined-behaviour sanitizers, and runs them one after the
other, from the seeds in fuzz/corpus. Prints the number of inputs that each
fuzzer has tried. If an input breaks something, saves the input below
build/fuzz/findings and exits with code 1.

  SECONDS   time for each fuzzer; the default is 60
  FUZZER    run only these of: ${fuzzers[*]}
  --help    print this text
TEXT
}

case "${1:-}" in -h | --help) usage; exit 0 ;; esac
seconds=60
if [[ ${1:-} =~ ^[1-9][0-9]{0,6}$ ]]; then
  seconds=$1
  shift
fi
for name in "$@"; do
  [[ " ${fuzzers[*]} " == *" $name "* ]] || { usage >&2; exit 2; }
done
[ $# -eq 0 ] || fuzzers=("$@")

mkdir -p "$ROOT/build"
build_packages=(cmake ninja-build)
require_packages g++ clang llvm googletest
# The sanitizers are in a package like libclang-rt-14-dev. Read the version, here 14, from the dependencies of
# Clang's own package.
require_packages "$(dpkg-query -W -f='${Depends}' clang | sed -n 's/^\(.*, *\)\?clang-\([0-9]*\).*/libclang-rt-\2-dev/p')"
build fuzz

# fuzz NAME: runs a fuzzer, writes its output to a log, and prints the number of inputs.
fuzz() {
  local name=$1 corpus=$ROOT/build/fuzz/corpus/$1 log=$ROOT/build/fuzz/$1.log status=0
  local seeds=("$ROOT/fuzz/corpus/$name")
  case $name in reader_*) seeds+=("$ROOT/tests/json") ;; esac
  mkdir -p "$corpus" "$ROOT/build/fuzz/findings"
  step "Fuzzing $name for $seconds s (log: build/fuzz/$name.log)"
  "$ROOT/build/fuzz/bin/fuzz_$name" -max_total_time="$seconds" -max_len=8192 -timeout=10 \
    -rss_limit_mb=2048 -print_final_stats=1 -dict="$ROOT/fuzz/json.dict" \
    -artifact_prefix="$ROOT/build/fuzz/findings/$name-" "$corpus" "${seeds[@]}" \
    >"$log" 2>&1 || status=$?
  printf '%-14s %12s inputs  %s\n' "$name" \
    "$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")" \
    "$([ $status -eq 0 ] && echo 'nothing found' || echo FOUND)"
  [ $status -eq 0 ] && return
  grep -E 'does not hold|ERROR|runtime error|Test unit written' "$log" >&2 || tail -n 20 "$log" >&2
  return 1
}

failed=0
for name in "${fuzzers[@]}"; do
  fuzz "$name" || failed=1
done
exit $failed
