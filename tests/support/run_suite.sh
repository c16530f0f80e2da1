#!/usr/bin/env bash
# run_suite.sh SUITE: runs it under Wine. Its word counts besides its code: a program whose Wine ends
# under it leaves 0.
set -eu -o pipefail
"$(dirname "${BASH_SOURCE[0]}")/../../cmake/run-wine.sh" "$1" |
  awk '{ print; fflush() } /^\[  PASSED  \]/ { passed = 1 } END { exit !passed }'
