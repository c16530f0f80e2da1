# Functions for the tests that are shell scripts, mostly to start and stop a SceneBroker. A test sets `work`
# to a folder of its own and then sources this file.
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
trap 'kill -KILL $(jobs -p) 2>/dev/null || true' EXIT

fail() { echo "FAILED: $*" >&2; exit 1; }

# need PROGRAM PACKAGE: fails if the program of this package is missing.
need() { command -v "$1" >/dev/null || fail "no $1: install $2"; }

# import LIBRARY FUNCTION...: makes an import library for a DLL of Windows, for Microsoft's linkers.
import() {
  printf '%s\n' "LIBRARY $1.dll" EXPORTS "${@:2}" >"$work/$1.def"
  llvm-dlltool -m i386:x86-64 -d "$work/$1.def" -l "$work/$1.lib"
}

# start_broker FOLDER ADDRESS [OPTION...]: starts the SceneBroker.exe of that folder with the scene of the
# sign-in form. ADDRESS replaces the address and the title of the form, because two tests that run at the same
# time must not have windows with the same title. The scene begins with an extra root element, so that the
# form's own root has position 1.
start_broker() {
  sed "s#http://shop.example/portal/login.html#$2#
    s#Café Größe – Sign in#$2#
    s#\"elements\": \[#&{\"id\": \"first\", \"rect\": [0, 0, 1, 1]},#" \
    "$root/tools/scenes/login.json" >"$work/scene.json"
  serve "$1" "$work/scene.json" "${@:3}"
}

# serve FOLDER SCENE [OPTION...]: starts the SceneBroker.exe of that folder with that scene file. Waits until it
# is ready.
serve() {
  # Creates the file now: wait_for may read it before the background job has created it.
  : >"$work/broker.txt"
  "$root/cmake/run-wine.sh" "$1/SceneBroker.exe" "Z:$2" "${@:3}" >"$work/broker.txt" &
  broker=$!
  wait_for ready
}

# wait_for TEXT: waits until the broker has printed a line that begins with this text.
wait_for() {
  until grep -q "^$1" "$work/broker.txt"; do
    kill -0 "$broker" || fail "the broker ended before '$1'"
    sleep 0.1
  done
}

# fact KEY: prints the value of the first line "KEY: VALUE" that the broker printed.
fact() { sed -n "/^$1: /{s///;s/\r\$//;p;q}" "$work/broker.txt"; }

summary() { tr -d '\r' <"$work/broker.txt" | sed -n '/^handed out/,$p' | paste -sd ,; }

# stop_broker COUNT: ends the broker. Fails unless its summary says that clients received COUNT objects and
# released all of them.
stop_broker() {
  kill -INT "$broker"
  wait "$broker" || fail "the broker ended with $?"
  local expected="handed out: $1,undelivered: 0,released: $1,still held: 0"
  [ "$(summary)" = "$expected" ] || fail "$(summary), not $expected"
}
