#!/usr/bin/env bash
# Runs one Windows program under Wine, in the throw-away prefix inside the build folder. The first
# call makes the prefix; its windows live without an X server. --server ARGUMENT... calls the
# prefix's wineserver instead.
set -eu
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
# Never the user's own prefix, which WINEPREFIX may name; without winemenubuilder nothing is written
# into the user's menus, and without the debugger a program that crashes ends, instead of hanging in it.
export WINEPREFIX=${TESSEL_WINEPREFIX:-$root/build/wine}
export WINEDEBUG=${WINEDEBUG:--all}
export WINEDLLOVERRIDES='mscoree,mshtml,winemenubuilder.exe,winedbg.exe='
unset WINEARCH WINELOADER
export LC_ALL=C.UTF-8

# Else the kernel may put Wine's heap where Wine must have its page of shared user data, and one start
# in some thousands ends without a word, or as error 1359 of CreateProcess. Containers may refuse it.
wine=(wine)
if setarch -R true 2>/dev/null; then wine=(setarch -R wine); fi

wineserver() { "$(type -P wineserver || echo /usr/lib/wine/wineserver)" "$@"; }

make_prefix() {
  "${wine[@]}" wineboot --init &&
    "${wine[@]}" reg add 'HKCU\Software\Wine\Drivers' /v Graphics /d null /f || return 1
  # The driver's choice is read when the prefix's server starts, so let it start anew.
  wineserver -k || true
  wineserver -w || true
  # Wine makes the user's Documents, Desktop and so on links into the home of who builds.
  find "$WINEPREFIX/drive_c/users" -type l | while IFS= read -r link; do
    rm "$link" && mkdir "$link" || return 1
  done || return 1
  touch "$WINEPREFIX/ready"
}

if [ ! -f "$WINEPREFIX/ready" ]; then
  mkdir -p "$WINEPREFIX"
  exec 9>"$WINEPREFIX/.lock"
  flock 9
  if [ ! -f "$WINEPREFIX/ready" ] && ! make_prefix >"$WINEPREFIX.log" 2>&1 9>&-; then
    echo "cannot make the Wine prefix $WINEPREFIX; $WINEPREFIX.log tells why" >&2
    exit 1
  fi
  exec 9>&-
fi

case "${1:-}" in
  "") ;;
  --server) wineserver "${@:2}" ;;
  *) exec "${wine[@]}" "$@" ;;
esac
