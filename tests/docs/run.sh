#!/usr/bin/env bash
# Fails if a document names a test that does not exist, or shows a sample that differs from its file.
# Documents name tests as suite/Case.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."

missing=0 named=0
suites=$(ls tests/*_test.cpp soak/*_test.cpp | sed 's#.*/##; s#_test.cpp$##' | paste -sd'|')
while read -r name; do
  named=$((named + 1))
  grep -qE "^TEST(_F)?\(\w+, ${name#*/}\)" tests/"${name%/*}"_test.cpp soak/"${name%/*}"_test.cpp 2>/dev/null && continue
  echo "no such test: $name"
  missing=1
done < <(grep -ohP "\b($suites)/[A-Z]\w+\b(?!\.)" docs/security.md docs/bounds.md | sort -u)
[ "$named" -gt 0 ] || { echo "no document names a test"; exit 1; }

# shows DOCUMENT FILE: the document holds the whole text of the file.
shows() {
  [[ $(<"$1") == *"$(<"$2")"* ]] || { echo "$1 does not show $2 as it is"; missing=1; }
}
shows docs/clients.md clients/cpp/first.cpp
exit "$missing"
