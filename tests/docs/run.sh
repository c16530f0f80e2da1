#!/usr/bin/env bash
# Fails if a document names a test that does not exist, shows a sample that differs from its file, or has a link
# that leads nowhere. Documents name a test as suite/Case, or by the option --gtest_filter of a command.
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
for sample in samples/cpp/first.cpp samples/c/first.c samples/node/first.mjs; do
  shows README.md "$sample"
  # A sample is for a user who sees the library for the first time.
  [ "$(wc -l <"$sample")" -le 40 ] || { echo "$sample is longer than 40 lines"; missing=1; }
done
shows clients/node/README.md samples/node/first.mjs
for origin in $(sed -nE 's/^set\(TESSEL_HTTP_ORIGIN "(.*)"\)$/\1/p' CMakeLists.txt); do
  grep -qF "$origin" docs/protocol.md || { echo "docs/protocol.md does not name $origin"; missing=1; }
done
python3 tests/support/check_links.py ./*.md docs/*.md tests/README.md package/README.md clients/node/README.md ||
  missing=1
exit "$missing"
