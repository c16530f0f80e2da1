#!/usr/bin/env bash
# Builds the package for users: the archive TesselSLB-VERSION-win-x64.zip and an archive with debug information.
set -euo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/cmake/prepare.sh"

usage() {
  cat <<'TEXT'
usage: ./package.sh [--verify]

Installs missing packages, builds the product, and writes into build/package:
  TesselSLB-VERSION-win-x64.zip         the DLLs, the tools, headers, samples, documents
  TesselSLB-VERSION-win-x64-debug.zip   debug information for the GNU debugger
  SHA256SUMS                            the checksums of both archives

  --verify  build a copy of the sources in another folder, and check that its
            archives have the same bytes. Takes some minutes
  --help    print this text
TEXT
}

# Returns the time of the last commit. Without the history, for example in an unpacked archive of the sources,
# the time of the changelog takes its place.
source_time() {
  git -C "$ROOT" log -1 --format=%ct 2>/dev/null || stat -c %Y "$ROOT/CHANGELOG.md"
}

# copy_documents FOLDER: copies the documents for users, and makes their links fit the package's folders.
copy_documents() {
  local documents=(clients inspector not-working performance performance-run protocol recording scene security)
  mkdir -p "$1/docs"
  cp "${documents[@]/%/.md}" login.svg "$1/docs/"
  cp "$ROOT/package/README.md" "$1/"
  cp "$ROOT"/clients/node/{README.md,index.d.ts} "$1/node/"
  sed -i -E 's#\]\(\.\./package/README\.md#](../README.md#g
    s#\]\((\.\./)(Common/include|clients/cpp|clients/c)/#](\1include/#g
    s#\]\(\.\./clients/node/#](../node/#g
    s#\btools/scenes/#scenes/#g' "$1"/docs/*.md
  sed -i -E 's#\]\(\.\./(clients/)?#](#g' "$1/README.md"
}

# make_tree FOLDER: makes the folder that becomes the archive.
make_tree() {
  cmake --install "$ROOT/build/mingw" --prefix "$1" >"$ROOT/build/package/install.log"
  mkdir -p "$1/node" "$1/samples" "$1/scenes"
  (cd "$ROOT/docs" && copy_documents "$1")
  cp -r "$ROOT"/samples/* "$1/samples/"
  cp "$ROOT"/tools/scenes/*.json "$1/scenes/"
  python3 "$ROOT/package/licenses.py" "$1/licenses"
  cp -r "$ROOT/build/mingw/node/tesselslb" "$ROOT/build/package/npm"
  python3 "$ROOT/package/licenses.py" "$ROOT/build/package/npm/licenses" --dlls
  npm pack --silent --pack-destination "$1/node" "$ROOT/build/package/npm" >/dev/null
  rm -r "$ROOT/build/package/npm"
}

make_package() {
  local version name folder tree
  build mingw product
  version=$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' "$ROOT/build/mingw/CMakeCache.txt")
  name=TesselSLB-$version-win-x64
  folder=$ROOT/build/package
  step "Packing build/package/$name.zip"
  rm -rf "$folder"
  mkdir -p "$folder/$name-debug"
  make_tree "$folder/$name"
  cp "$ROOT"/build/mingw/debug/*.debug "$folder/$name-debug/"
  python3 "$ROOT/package/spdx.py" "$folder/$name" "$version" "$SOURCE_DATE_EPOCH"
  for tree in "$name" "$name-debug"; do
    python3 "$ROOT/package/archive.py" "$folder/$tree" "$SOURCE_DATE_EPOCH"
  done
  (cd "$folder" && sha256sum ./*.zip >SHA256SUMS)
}

# Builds a copy of the sources in a folder with another name, and compares the archives.
verify() {
  local copy=$ROOT/build/verify/other-folder file
  rm -rf "$ROOT/build/verify"
  mkdir -p "$copy"
  git -C "$ROOT" ls-files -z --cached --others --exclude-standard |
    (cd "$ROOT" && xargs -0 cp --parents -t "$copy")
  "$copy/package.sh"
  for file in "$ROOT"/build/package/*.zip; do
    cmp "$file" "$copy/build/package/${file##*/}" || die "the two builds differ; compare their folders in build/package"
  done
  step "The two builds have the same bytes"
}

verify=false
case "${1:-}" in
  -h | --help) usage; exit 0 ;;
  --verify) verify=true; shift ;;
esac
[ $# -eq 0 ] || { usage >&2; exit 2; }

mkdir -p "$ROOT/build"
require_packages python3 npm
export PYTHONDONTWRITEBYTECODE=1
# The usual variable for the time of reproducible builds.
export SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-$(source_time)}
make_package
! $verify || verify
