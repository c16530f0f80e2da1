#!/usr/bin/env bash
# Builds everything and runs every test.
set -eu
. "$(dirname "${BASH_SOURCE[0]}")/cmake/prepare.sh"

usage() {
  cat <<'TEXT'
usage: ./test.sh [FILTER]

Installs what is missing, builds everything and runs the tests, under Wine and
natively under the sanitizers.

  FILTER    run only the suites whose name matches this regular expression,
            e.g. ./test.sh pipe
  --list    list the suites
  --help    this text
TEXT
}

filter=()
case "${1:-}" in
  -h | --help) usage; exit 0 ;;
  --list) filter=(--show-only) ;;
  -*) usage >&2; exit 2 ;;
  ?*) filter=(--tests-regex "$1") ;;
esac

mkdir -p "$ROOT/build"
require_packages
build native
build mingw
trap release_wine EXIT
hold_wine "$ROOT/build/wine" "$ROOT/build/wine-level"
step "Testing"
cd "$ROOT"
ctest --test-dir build/mingw --output-on-failure --parallel 8 --no-tests=error "${filter[@]}"
