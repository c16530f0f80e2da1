#!/usr/bin/env bash
# Runs one Windows program under Wine, in the throw-away prefix inside the build folder. The first
# call makes the prefix; its windows live without an X server.
set -eu
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
# Never the user's own prefix, which WINEPREFIX may name; without winemenubuilder nothing is written
# into the user's menus.
export WINEPREFIX=${TESSEL_WINEPREFIX:-$root/build/wine}
export WINEDEBUG=${WINEDEBUG:--all}
export WINEDLLOVERRIDES='mscoree,mshtml,winemenubuilder.exe='
unset WINEARCH WINELOADER
export LC_ALL=C.UTF-8

if [ ! -f "$WINEPREFIX/ready" ]; then
  mkdir -p "$WINEPREFIX"
  exec 9>"$WINEPREFIX/.lock"
  flock 9
  if [ ! -f "$WINEPREFIX/ready" ]; then
    wine wineboot --init >/dev/null 2>&1 9>&-
    wine reg add 'HKCU\Software\Wine\Drivers' /v Graphics /d null /f >/dev/null 2>&1 9>&-
    # The driver's choice is read when the prefix's server starts, so let it start anew.
    wineserver=$(command -v wineserver || echo /usr/lib/wine/wineserver)
    "$wineserver" -k 9>&- || true
    "$wineserver" -w 9>&- || true
    touch "$WINEPREFIX/ready"
  fi
  exec 9>&-
fi

[ $# -gt 0 ] || exit 0
exec wine "$@"
