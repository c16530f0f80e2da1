#!/usr/bin/env bash
# Builds everything and runs every test.
set -euo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/cmake/prepare.sh"

usage() {
  cat <<'TEXT'
usage: ./test.sh [FILTER...]

Installs missing packages, builds everything and runs the tests, under Wine and
natively with the sanitizers.

  FILTER    run only the suites whose name matches one of these regular
            expressions, e.g. ./test.sh pipe '^log$'
  --list    list the suites
  --help    print this text
TEXT
}

list=false
case "${1:-}" in
  -h | --help) usage; exit 0 ;;
  --list) list=true; shift ;;
esac
for filter in "$@"; do
  case $filter in -*) usage >&2; exit 2 ;; esac
done

if $list && [ $# -gt 0 ]; then usage >&2; exit 2; fi

mkdir -p "$ROOT/build"
require_packages g++ clang lld make npm pkgconf python3
if $list; then
  configure mingw
  exec ctest --test-dir "$ROOT/build/mingw" --show-only
fi
build native
build mingw
"$ROOT/package.sh"
hold_wine "$ROOT/build/wine" "$ROOT/build/wine-level"
step "Testing"
cd "$ROOT"
names=$(IFS='|' && echo "$*")
# A suite that was killed has not removed its stand-ins for the launcher and the injector. Other suites would
# find and start these stand-ins.
rm -rf "$BIN"/slinject* "$ROOT/build/wine/drive_c/Program Files (x86)/Microsoft Silverlight"
ctest --test-dir build/mingw --output-on-failure --parallel 8 --no-tests=error ${names:+--tests-regex "$names"}
