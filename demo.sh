#!/usr/bin/env bash
# Shows how the bridge works: starts a broker that serves a scene, and inspects it with the inspector.
set -euo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/cmake/prepare.sh"

usage() {
  cat <<'TEXT'
usage: ./demo.sh [SCENE]

Installs missing packages, builds, starts a broker that serves the scene, and
inspects it from another process, through the module.

  SCENE     a scene file (docs/scene.md); the default is tools/scenes/login.json
  --help    print this text
TEXT
}

most_lines=40
broker=
failures=0
output=

# Ends the broker as Ctrl-C does, or by force if the broker still runs after 15 seconds. Returns the broker's
# exit code.
stop_broker() {
  local pid=$broker i
  broker=
  [ -n "$pid" ] || return 0
  kill -INT "$pid" 2>/dev/null || true
  for ((i = 0; i < 150; i++)); do
    kill -0 "$pid" 2>/dev/null || break
    sleep 0.1
  done
  kill -KILL "$pid" 2>/dev/null || true
  wait "$pid"
}

clean_up() {
  stop_broker || true
  [ -z "$output" ] || rm -f "$output"
}

start_broker() {
  output=$(mktemp "$ROOT/build/demo.XXXXXX")
  "$ROOT/cmake/run-wine.sh" "$BIN/SceneBroker.exe" "Z:$1" >"$output" &
  broker=$!
  until grep -q '^ready' "$output"; do
    kill -0 "$broker" 2>/dev/null || die "the broker did not start"
    sleep 0.1
  done
}

# fact KEY: prints the value that the broker printed for the key.
fact() { sed -n "/^$1: /{s///;s/\r\$//;p;q}" "$output"; }

# tessel COMMAND [OPTION...]: runs the inspector.
tessel() {
  local command=$1
  shift
  "$ROOT/cmake/run-wine.sh" "$BIN/tessel.exe" "$command" --window="$window" --address="$address" "$@" |
    tr -d '\r'
}

# show COMMAND [OPTION...]: prints the command as a user would type it, runs it, and prints its report.
show() {
  local report
  printf '\n  $ tessel %s\n' "${*@Q}" | sed "s/'\([A-Za-z0-9,=.-]*\)'/\1/g"
  if report=$(tessel "$@"); then
    head -n "$most_lines" <<<"$report" | sed 's/^/    /'
    local more=$(($(wc -l <<<"$report") - most_lines))
    [ "$more" -le 0 ] || printf '    ... and %d more lines\n' "$more"
  else
    failures=$((failures + 1))
  fi
}

# element_with FACT: chooses the first element about which the broker printed a line that matches the pattern
# FACT, and prints the point of this element. Skips an element if the inspector does not find it at its point.
element_with() {
  local line point= id=
  while IFS= read -r line <&3; do
    case $line in
      'element: '*)
        line=${line#element: } point=${line%% *} id=${line#* }
        ;;
    esac
    [[ $line == $1 ]] || continue
    [ "$(tessel at "$point" | head -n 1)" = "element: $id" ] || continue
    printf '%s\n' "$point"
    return 0
  done 3< <(sed -nE '/^ready/q; s/\r$//; /^(element|parent|attribute|items): /p' "$output")
  return 1
}

show_identity() {
  local point
  point=$(element_with 'attribute: value') || point=$(element_with 'parent: *') ||
    point=$(element_with '*') || return 0
  step "One element: its place, and how to find it again"
  show at "$point"
  show parent --at="$point"
  show ancestors --at="$point"
  show selector --at="$point"
  show id --at="$point"
  show find ,, --at="$point" --parent=1
  show rect --at="$point"
  show get name --at="$point"
}

show_actions() {
  local point
  step "Actions, and the states that they change"
  if point=$(element_with 'attribute: value'); then
    show get value --at="$point"
    show set 'Hello, bridge' --at="$point"
    show get value --at="$point"
  fi
  if point=$(element_with 'attribute: checked'); then
    show get checked --at="$point"
    show click --at="$point"
    show get checked --at="$point"
    show check --at="$point"
    show get checked --at="$point"
  fi
  if point=$(element_with 'items: [1-9]*'); then
    show items --at="$point"
    show select "$(tessel items --at="$point" | sed -n '3,$s/^  //p' | grep -vm1 '\\')" --at="$point"
    show get selected --at="$point"
  fi
  point=$(element_with '*') || return 0
  show setfocus --at="$point"
  show focus
}

show_summary() {
  local code=0 handed_out released
  stop_broker || code=$?
  step "The broker's summary"
  sed -n '/^handed out/,$p' "$output" | sed 's/^/    /'
  handed_out=$(fact 'handed out') released=$(fact released)
  [ "$code" -eq 0 ] || die "the broker ended with code $code"
  [ "$failures" -eq 0 ] || die "$failures calls of the inspector failed"
  [ "${handed_out:-0}" = "${released:-none}" ] || die "objects were not released"
}

case "${1:-}" in
  -h | --help) usage; exit 0 ;;
  -*) usage >&2; exit 2 ;;
esac
[ $# -le 1 ] || { usage >&2; exit 2; }
scene=$(realpath -m "${1:-$ROOT/tools/scenes/login.json}")
[ -f "$scene" ] || die "there is no file $scene; give the path of a scene"

mkdir -p "$ROOT/build"
require_packages
build mingw SceneBroker tessel
prepare_wine
trap clean_up EXIT
trap 'exit 130' INT TERM HUP

step "Serving ${scene#"$ROOT"/}"
start_broker "$scene"
window=$(fact window) address=$(fact address)
sed -n '/^element/q; s/^/    /; s/\r$//; p' "$output"
step "What the scene shows"
show tree
show_identity
show_actions
show_summary
