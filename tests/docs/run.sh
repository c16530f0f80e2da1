#!/usr/bin/env bash
# Fails if a document names a test that does not exist, or shows a sample that differs from its file.
# Documents name a test as suite/Case, or by the option --gtest_filter of a command.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."

missing=0 named=0
# check SUITE FILTER: checks that the suite has a test that matches the filter.
check() {
  local test
  named=$((named + 1))
  while read -r test; do
    # shellcheck disable=SC2053 # the filter is a pattern
    [[ $test == $2 ]] && return
  done < <(sed -nE 's/^TEST(_F)?\((\w+), (\w+)\).*/\2.\3/p' "tests/$1_test.cpp")
  echo "no such test: $1/$2"
  missing=1
}

suites=$(ls tests/*_test.cpp | sed 's#.*/##; s#_test.cpp$##' | paste -sd'|')
while IFS=/ read -r suite name; do
  check "$suite" "*.$name"
done < <(grep -ohP "\b($suites)/[A-Z]\w+\b(?!\.)" docs/security.md docs/bounds.md | sort -u)
[ "$named" -gt 0 ] || { echo "no document names a test"; exit 1; }

named=0
while read -r suite filter; do
  check "$suite" "$filter"
done < <(sed -nE "s#.*/(\w+)_test\.exe --gtest_filter='([^']*)'.*#\1 \2#p" docs/contributing.md)
[ "$named" -gt 0 ] || { echo "no command has a filter"; exit 1; }

# shows DOCUMENT FILE: checks that the document contains the whole text of the file.
shows() {
  [[ $(<"$1") == *"$(<"$2")"* ]] || { echo "$1 does not show $2 as it is"; missing=1; }
}
shows docs/clients.md clients/cpp/first.cpp
shows docs/clients.md clients/c/first.c
shows clients/node/README.md clients/node/first.mjs
exit "$missing"
