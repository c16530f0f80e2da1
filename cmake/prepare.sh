# Sourced by demo.sh and test.sh: what both need before they can start.

ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
BIN=$ROOT/build/mingw/bin
export LC_ALL=C.UTF-8

step() { printf '==> %s\n' "$*"; }
die() {
  printf '%s: %s\n' "$(basename "$0")" "$*" >&2
  exit 1
}

# Installs the Debian packages that are missing.
require_packages() {
  local missing=() package
  for package in cmake ninja-build g++ g++-mingw-w64-x86-64-posix wine wine64 googletest \
                 libcli11-dev nlohmann-json3-dev; do
    dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null | grep -qx installed ||
      missing+=("$package")
  done
  [ ${#missing[@]} -gt 0 ] || return 0

  local as_root=()
  if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || die "missing packages: ${missing[*]}; run as root, or install sudo"
    as_root=(sudo)
  fi
  command -v apt-get >/dev/null || die "missing packages: ${missing[*]}; this is no Debian system"
  step "Installing ${missing[*]}"
  "${as_root[@]}" apt-get update -qq || die "cannot read the package lists"
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
    apt-get install -y -qq --no-install-recommends "${missing[@]}" >"${TMPDIR:-/tmp}/install.$$" 2>&1 || {
    tail -n 20 "${TMPDIR:-/tmp}/install.$$" >&2
    die "cannot install ${missing[*]}"
  }
  rm -f "${TMPDIR:-/tmp}/install.$$"
}

# build PRESET [TARGET...]
build() {
  local preset=$1
  shift
  cd "$ROOT"
  if [ ! -f "build/$preset/build.ninja" ]; then
    step "Configuring build/$preset"
    cmake --preset "$preset" >"$ROOT/build/$preset.configure.log" 2>&1 || {
      tail -n 30 "$ROOT/build/$preset.configure.log" >&2
      die "cannot configure build/$preset"
    }
  fi
  step "Building build/$preset"
  cmake --build --preset "$preset" ${1:+--target "$@"} || die "the build failed"
}

prepare_wine() {
  [ -f "$ROOT/build/wine/ready" ] || step "Making the Wine prefix build/wine"
  "$ROOT/cmake/run-wine.sh" || die "cannot make the Wine prefix"
}

# hold_wine PREFIX...: keeps each prefix and its desktop awake until release_wine. The first program in
# an idle one starts Wine's services, the first with a window its desktop, and these inherit the
# program's output: whoever reads that would wait for them too.
holders=()
hold_wine() {
  local prefix
  for prefix in "$@"; do
    export TESSEL_WINEPREFIX=$prefix
    [ -f "$prefix/ready" ] || step "Making the Wine prefix ${prefix#"$ROOT"/}"
    "$ROOT/cmake/run-wine.sh" </dev/null || die "cannot make the Wine prefix $prefix"
    "$ROOT/cmake/run-wine.sh" notepad </dev/null >/dev/null 2>&1 &
    holders+=($!)
    "$ROOT/cmake/run-wine.sh" rundll32 user32.dll,MessageBeep </dev/null >/dev/null 2>&1 || true
  done
  unset TESSEL_WINEPREFIX
}
release_wine() { kill -KILL "${holders[@]}" 2>/dev/null || true; }
