#!/usr/bin/env bash
# Measures the module and alternatives (other JSON libraries, bare system calls), and prints the ratios.
set -euo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/cmake/prepare.sh"

usage() {
  cat <<'TEXT'
usage: ./bench.sh [--quick] [--json FILE] [GROUP...]

Installs missing packages, makes an optimised build, and measures natively and
under Wine. All rows of a table run side by side; docs/performance.md explains
the tables.

  GROUP        run only these groups:
                 text       reading values from message text and writing them
                 memory     heap use of a loaded message
                 roundtrip  an element call to a running server
                 log        a disabled log line
                 growth     time and memory per element as the answer grows
                 tree       reading a scene of 1,000 elements with the inspector
  --quick      fewer rounds; takes less than two minutes after the build
  --json FILE  also write the tables to a file
  --help       print this text
TEXT
}

groups=(text memory roundtrip log growth tree)
chosen=()
json=
options=()
while [ $# -gt 0 ]; do
  case $1 in
    -h | --help) usage; exit 0 ;;
    --quick) options+=(--quick) ;;
    --json)
      [ $# -gt 1 ] || { usage >&2; exit 2; }
      json=$(realpath -m "$2")
      shift ;;
    *)
      case " ${groups[*]} " in
        *" $1 "*) chosen+=("$1") ;;
        *) usage >&2; exit 2 ;;
      esac ;;
  esac
  shift
done
[ ${#chosen[@]} -gt 0 ] || chosen=("${groups[@]}")

# The benchmark programs of each group: those that run natively, and those that run under Wine.
declare -A native_programs=([text]=text [memory]=memory [growth]=growth)
declare -A wine_programs=([text]=text [memory]=memory [roundtrip]='roundtrip stages' [log]=log [growth]=growth [tree]=tree)

mkdir -p "$ROOT/build"
require_packages g++ rapidjson-dev libsimdjson-dev
build bench bench
build mingw bench
# Use a separate Wine prefix, because the tests switch the log on in their prefix, which slows the calls down.
hold_wine "$ROOT/build/wine-bench"
export TESSEL_WINEPREFIX=$ROOT/build/wine-bench

rows=$ROOT/build/bench.rows
: >"$rows"
for group in "${chosen[@]}"; do
  step "Measuring: $group"
  for program in ${native_programs[$group]:-}; do
    "$ROOT/build/bench/bin/bench_$program" "${options[@]}" --json "$rows"
  done
  for program in ${wine_programs[$group]:-}; do
    "$ROOT/cmake/run-wine.sh" "$BIN/bench_$program.exe" "${options[@]}" --json "Z:$rows"
  done
done

if [ -n "$json" ]; then
  processor=$(sed -n '/^model name[^:]*: /{s///p;q}' /proc/cpuinfo)
  {
    printf '{"machine": {"processor": "%s", "processors": %d, "system": "%s"},\n"tables": [\n' \
      "$processor" "$(nproc)" "$(. /etc/os-release && echo "$PRETTY_NAME")"
    sed '$!s/$/,/' "$rows"
    printf ']}\n'
  } >"$json"
  step "The tables are in $json"
fi
