#!/usr/bin/env bash
# Runs one part of the endurance run, the test of the host channel, for a short time (0.1 minutes) and with a
# fixed seed. Also requires the verdict in the output, because a program returns 0 if its wineserver ends first.
set -euo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/../cmake/prepare.sh"
ends_with_word '^verdict of the host: nothing lost' \
  "$ROOT/cmake/run-wine.sh" "$BIN/soak_host.exe" 0.1 1
