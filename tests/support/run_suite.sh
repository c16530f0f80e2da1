#!/usr/bin/env bash
# run_suite.sh SUITE: runs it under Wine; it must also say that it passed.
set -eu
. "$(dirname "${BASH_SOURCE[0]}")/../../cmake/prepare.sh"
ends_with_word '^\[  PASSED  \]' "$ROOT/cmake/run-wine.sh" "$1"
