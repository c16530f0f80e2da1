#!/usr/bin/env bash
# Shows the bridge at work: a broker that serves a scene, and the inspector that looks at it.
set -euo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/cmake/prepare.sh"

usage() {
  cat <<'TEXT'
usage: ./demo.sh [SCENE]

Installs what is missing, builds, starts a broker that serves the scene, and
shows what the inspector finds there, from another process, through the module.

  SCENE     a scene file (docs/scene.md); tools/scenes/login.json if absent
  --help    this text
TEXT
}

most_elements=8
most_attributes=3
broker=
failures=0
output=

# Ends the broker as Ctrl-C does, by force only if it hangs. Gives its exit code.
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

# fact KEY: what the broker prints behind it.
fact() { sed -n "/^$1: /{s///;s/\r\$//;p;q}" "$output"; }

# tessel COMMAND [OPTION...] [-- NAME]: one run of the inspector.
tessel() {
  local command=$1
  shift
  "$ROOT/cmake/run-wine.sh" "$BIN/tessel.exe" "$command" --window="$window" --address="$address" "$@" |
    tr -d '\r'
}

# show LABEL COMMAND...: what the inspector reports, on one line.
show() {
  local label=$1 report
  shift
  if ! report=$(tessel "$@"); then
    failures=$((failures + 1))
    return 0
  fi
  local rest=${report#*$'\n'} # behind the line that names the element
  case $1 in
    parent) report=${report%%$'\n'*} report=${report#element: } ;;
    rect) report=$(sed 's/^[a-z]*: //' <<<"$rest" | paste -sd ' ') ;;
    get) report=${rest#"$label: "} ;;
    items) report=$(sed '1d; s/^  //; $!s/$/,/' <<<"$rest" | paste -sd ' ') ;;
  esac
  printf '    %-12s %s\n' "$label" "$report"
}

# show_element POINT: finds the element there; gives 1 when another covers the one that is meant.
show_element() {
  local point=$1 id=$2 report
  if ! report=$(tessel at "$point"); then
    failures=$((failures + 1))
    return 1
  fi
  report=${report%%$'\n'*}
  printf '\n  at %-10s %s\n' "$point" "${report#element: }"
  [ "$report" = "element: $id" ] || return 1
  show rectangle rect --at="$point"
}

# Follows the broker's list of what there is; each line is one question to the inspector.
show_elements() {
  local key value point= elements=0 attributes=0
  while IFS= read -r line <&3; do
    key=${line%%: *} value=${line#*: }
    if [ "$key" = element ]; then
      elements=$((elements + 1)) attributes=0
      [ "$elements" -le "$most_elements" ] || break
      point=${value%% *}
      show_element "$point" "${value#* }" || point=
    elif [ -n "$point" ]; then
      case $key in
        parent) show parent parent --at="$point" ;;
        items) show items items --at="$point" ;;
        attribute)
          attributes=$((attributes + 1))
          [ "$attributes" -gt "$most_attributes" ] ||
            show "$value" get --at="$point" -- "$value"
          ;;
      esac
    fi
  done 3< <(sed -nE '/^ready/q; s/\r$//; /^(element|parent|attribute|items): /p' "$output")
}

show_focus() {
  [ -n "$(fact focus)" ] || return 0
  step "The element that has the focus"
  tessel focus | sed 's/^/    /' || failures=$((failures + 1))
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
show_focus
step "Elements, found at points"
show_elements
show_summary
