#!/usr/bin/env bash
# run_suite.sh SUITE: runs it under Wine. Its word counts besides its code: a program whose Wine ends
# under it leaves 0.
set -eu
. "$(dirname "${BASH_SOURCE[0]}")/../../cmake/prepare.sh"
ends_with_word '^\[  PASSED  \]' "$ROOT/cmake/run-wine.sh" "$1"
