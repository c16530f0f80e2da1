# Functions that several scripts share. The scripts source this file.

ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
BIN=$ROOT/build/mingw/bin
export LC_ALL=C.UTF-8

step() { printf '==> %s\n' "$*"; }
die() {
  printf '%s: %s\n' "$(basename "$0")" "$*" >&2
  exit 1
}

# The packages that the build needs. require_packages [PACKAGE...] installs these packages and the named
# packages. Packages that are already installed are left as they are. The package npm is not installed if there
# is a command npm, because this package conflicts with a Node.js that does not come from Debian.
build_packages=(cmake ninja-build g++-mingw-w64-x86-64-posix wine wine64 googletest libcli11-dev
                nlohmann-json3-dev llvm)
require_packages() {
  local wanted=("${build_packages[@]}" "$@") missing=() as_root=() package
  if ! command -v apt-get >/dev/null || ! command -v dpkg-query >/dev/null; then
    die "this is not a Debian system; install the software of these packages, then build by hand: ${wanted[*]}"
  fi
  for package in "${wanted[@]}"; do
    [ "$package" != npm ] || ! command -v npm >/dev/null || continue
    dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null | grep -qx installed ||
      missing+=("$package")
  done
  [ ${#missing[@]} -gt 0 ] || return 0

  if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || die "missing packages: ${missing[*]}; run as root, or install sudo"
    as_root=(sudo)
  fi
  step "Installing ${missing[*]} (log: build/install.log)"
  {
    "${as_root[@]}" apt-get update -q &&
      "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get install -y -q --no-install-recommends "${missing[@]}"
  } 2>&1 | tee "$ROOT/build/install.log" || die "cannot install ${missing[*]}"
}

# configure PRESET: configures build/PRESET.
configure() {
  step "Configuring build/$1"
  cd "$ROOT"
  cmake --preset "$1" >"build/$1.configure.log" 2>&1 || {
    tail -n 30 "build/$1.configure.log" >&2
    die "cannot configure build/$1 (log: build/$1.configure.log)"
  }
}

# build PRESET [TARGET...]: configures and builds all targets, or only the named targets.
build() {
  local preset=$1
  shift
  configure "$preset"
  step "Building build/$preset"
  cmake --build --preset "$preset" ${1:+--target "$@"} || die "the build failed"
}

prepare_wine() {
  [ -f "$ROOT/build/wine/ready" ] || step "Making the Wine prefix build/wine"
  "$ROOT/cmake/run-wine.sh" || exit 1
}

# hold_wine PREFIX...: keeps wineserver, the services and the desktop of each prefix running until the
# script ends, and then ends all programs in the prefix. There are two reasons:
# - wineserver exits with the last program. Programs that have just started then exit with code 0.
# - The first program in an idle prefix starts Wine's services, and the first program with a window starts the
#   desktop. The services and the desktop inherit the program's output, so a script that reads this output to
#   its end would wait until they end, too.
held=()
hold_wine() {
  local prefix
  trap release_wine EXIT
  trap 'exit 130' INT TERM HUP
  for prefix in "$@"; do
    [ -f "$prefix/ready" ] || step "Making the Wine prefix ${prefix#"$ROOT"/}"
    in_prefix "$prefix" || exit 1
    in_prefix "$prefix" --server -p 2>/dev/null || true  # fails if wineserver already runs
    held+=("$prefix")
    # notepad keeps the desktop running. The first rundll32 starts the desktop alone, because two programs
    # that start a desktop at the same time may wait ten seconds for it.
    in_prefix "$prefix" rundll32 user32.dll,MessageBeep >/dev/null 2>&1 || true
    in_prefix "$prefix" notepad >/dev/null 2>&1 &
    in_prefix "$prefix" rundll32 user32.dll,MessageBeep >/dev/null 2>&1 || true
    kill -0 $! 2>/dev/null || die "the desktop of the Wine prefix $prefix did not start"
  done
}
release_wine() {
  local prefix
  for prefix in "${held[@]}"; do in_prefix "$prefix" --server -k || true; done
}
in_prefix() { TESSEL_WINEPREFIX=$1 "$ROOT/cmake/run-wine.sh" "${@:2}" </dev/null; }

# ends_with_word PATTERN COMMAND...: runs the command, and passes its output on. Returns the command's exit
# code, or 1 if the command prints no line that matches PATTERN. The exit code alone is not enough, because a
# program returns 0 if its wineserver ends first.
ends_with_word() (
  set -o pipefail
  { "${@:2}" | tee /dev/fd/4 4>&1 >&3 | grep -c "$1" >/dev/null; } 3>&1
)
