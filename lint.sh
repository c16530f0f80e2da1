#!/usr/bin/env bash
# Checks the product's sources with a second compiler and with clang-tidy.
set -euo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/cmake/prepare.sh"

usage() {
  cat <<'TEXT'
usage: ./lint.sh [FILTER...]

Installs missing packages and checks the product's sources with clang-tidy.
Clang compiles them for MinGW's target with warnings as errors. .clang-tidy
lists the checks, and says why some are off.

  FILTER    check only the sources whose path matches one of these regular
            expressions, e.g. ./lint.sh json/ Pipe
  --help    print this text
TEXT
}

case "${1:-}" in
  -h | --help) usage; exit 0 ;;
  -*) usage >&2; exit 2 ;;
esac

mkdir -p "$ROOT/build"
require_packages clang-tidy
configure mingw
cd "$ROOT"
names=$(IFS='|' && echo "$*")
mapfile -t sources < <(find json logging wire Common tools -name '*.cpp' | grep -E -e "$names" | sort)
[ ${#sources[@]} -gt 0 ] || die "no source matches $*"

# Clang does not find the headers of the GCC variant with POSIX threads by itself, so name their folders.
library=$(x86_64-w64-mingw32-g++-posix -print-file-name=include/c++)
options=(-p build/mingw --quiet --extra-arg=--target=x86_64-w64-mingw32 --extra-arg=-nostdinc++
         --extra-arg=-Wno-unknown-warning-option)
for folder in "$library" "$library/x86_64-w64-mingw32" "$library/backward"; do
  options+=("--extra-arg=-isystem$folder")
done
step "Checking ${#sources[@]} sources"
printf '%s\0' "${sources[@]}" | xargs -0 -P 2 -n 2 clang-tidy "${options[@]}" 2>build/lint.log ||
  die "clang-tidy has found something (its other output: build/lint.log)"
