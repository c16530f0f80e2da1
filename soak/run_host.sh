#!/usr/bin/env bash
# Runs the part of the endurance run that tests the host channel for a short time, with a fixed seed. Also
# requires the verdict in the output, because a program whose wineserver ends returns 0.
set -euo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/../cmake/prepare.sh"
ends_with_word '^verdict of the host: nothing lost' \
  "$ROOT/cmake/run-wine.sh" "$BIN/soak_host.exe" 0.1 1
