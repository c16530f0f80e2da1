#!/usr/bin/env bash
# run_suite.sh SUITE: runs a suite under Wine. Succeeds only if the suite also prints that it passed.
set -eu
. "$(dirname "${BASH_SOURCE[0]}")/../../cmake/prepare.sh"
ends_with_word '^\[  PASSED  \]' "$ROOT/cmake/run-wine.sh" "$1"
