#!/usr/bin/env bash
# Runs a Windows program under Wine, in a Wine prefix inside the build folder. The first call makes the prefix,
# so the prefix may be deleted at any time. Programs in this prefix can open windows without an X server.
# With --server ARGUMENT..., runs the prefix's wineserver with these arguments instead.
set -eu
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
# Ignores the user's WINEPREFIX, so that the user's own prefix is never changed. Switches winemenubuilder off,
# because it writes into the user's menus. Switches the debugger winedbg off, because a crashed program would
# hang in it.
export WINEPREFIX=${TESSEL_WINEPREFIX:-$root/build/wine}
export WINEDEBUG=${WINEDEBUG:--all}
export WINEDLLOVERRIDES='mscoree,mshtml,winemenubuilder.exe,winedbg.exe='
unset WINEARCH WINELOADER
export LC_ALL=C.UTF-8

# Switches address randomization off where the system allows it. With randomization, the kernel may place
# Wine's heap at the fixed address of Wine's shared user data. Then about one start in several thousand ends
# silently or fails with error 1359 of CreateProcess.
wine=(wine)
if setarch -R true 2>/dev/null; then wine=(setarch -R wine); fi

wineserver() { "$(type -P wineserver || echo /usr/lib/wine/wineserver)" "$@"; }

make_prefix() {
  "${wine[@]}" wineboot --init &&
    "${wine[@]}" reg add 'HKCU\Software\Wine\Drivers' /v Graphics /d null /f || return 1
  # Wine reads the setting "Graphics" only when it starts the prefix's desktop. Ending wineserver also ends the
  # desktop, so the next program starts a new one.
  wineserver -k || true
  wineserver -w || true
  # Wine makes Documents, Desktop and so on links into the user's home. Replace them with folders.
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
    echo "cannot make the Wine prefix $WINEPREFIX; read $WINEPREFIX.log" >&2
    exit 1
  fi
  exec 9>&-
fi

case "${1:-}" in
  "") ;;
  --server) wineserver "${@:2}" ;;
  *) exec "${wine[@]}" "$@" ;;
esac
