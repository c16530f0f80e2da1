#!/usr/bin/env bash
# run.sh BUILD: unpacks the archive for users that ./package.sh has built, and uses it as a user would. Checks its
# files, compiles each header alone, builds the samples with each build system, and runs them against the broker
# of the package.
set -eu
work=$1/package-test
. "$(dirname "${BASH_SOURCE[0]}")/../support/broker.sh"
need clang++ clang
need pkg-config pkgconf
gcc=x86_64-w64-mingw32-gcc-posix
gxx=x86_64-w64-mingw32-g++-posix

rm -rf "$work"
mkdir -p "$work/a folder"
archives=("$root"/build/package/*-x64.zip)
[ -f "${archives[0]}" ] || fail "no archive: run ./package.sh"
(cd "$root/build/package" && sha256sum --quiet --check SHA256SUMS) || fail "the checksums of the archives"
# Unpack into a folder whose name has a blank, because users do that.
(cd "$work/a folder" && cmake -E tar xf "${archives[0]}")
tree=$(echo "$work/a folder"/*)

# Check the files of the archive.
(cd "$tree" && sha256sum --quiet --check SHA256SUMS) || fail "the checksums"
[ "$(cd "$tree" && find . -type f | wc -l)" -eq $(($(wc -l <"$tree/SHA256SUMS") + 1)) ] || fail "a file has no checksum"
! grep -rlaF "$root" "$tree" || fail "these files hold the path of the source folder"
python3 "$root/tests/package/check_tree.py" "$tree" || fail "the files of the package"
python3 "$root/tests/support/check_links.py" "$tree"/*.md "$tree"/*/*.md || fail "links of the documents"

# Check that each header compiles alone, and together with all others.
library=$("$gxx" -print-file-name=include/c++)
clang=(clang++ --target=x86_64-w64-mingw32 -nostdinc++ -isystem "$library"
       -isystem "$library/x86_64-w64-mingw32" -isystem "$library/backward")
# compile STANDARD HEADER...: compiles a source that includes only these headers, with both compilers.
compile() {
  local flags=("-std=c++$1" -Wall -Wextra -Wpedantic -Werror -fsyntax-only "-I$tree/include")
  printf '#include <%s>\n' "${@:2}" >"$work/source.cpp"
  "$gxx" "${flags[@]}" "$work/source.cpp" && "${clang[@]}" "${flags[@]}" "$work/source.cpp" ||
    fail "does not compile as C++$1: ${*:2}"
}
headers=("$tree"/include/*.h)
headers=("${headers[@]##*/}")
for header in Client ResultCodes Text WindowSearch; do
  compile 20 "tessel/$header.h"
done
for header in "${headers[@]}"; do compile 17 "$header"; done
compile 20 windows.h "${headers[@]}"
compile 20 windows.h $(printf '%s\n' "${headers[@]}" | tac)

# Compile a broker's host in C with both compilers.
for compiler in $gcc 'clang --target=x86_64-w64-mingw32'; do
  $compiler -std=c11 -Wall -Wextra -Werror -pedantic "-I$tree/include" -c "$root/tests/package/host.c" \
    -o "$work/host.obj" || fail "does not compile as C11: $compiler"
done
options=$(PKG_CONFIG_LIBDIR="$tree/lib/pkgconfig" pkg-config --cflags --libs 'TesselSLB >= 1.0')
eval "$gcc '$work/host.obj' -o '$tree/bin/host.exe' $options" || fail "the host in C"

# Build the samples. Each build leaves first.exe and the DLLs in a folder of its own.
for language in cpp c; do
  sample=$tree/samples/$language
  cmake -S "$sample" -B "$sample/build" -G Ninja -DCMAKE_SYSTEM_NAME=Windows -DCMAKE_C_COMPILER=$gcc \
    -DCMAKE_CXX_COMPILER=$gxx >"$work/cmake.log" 2>&1 &&
    cmake --build "$sample/build" >>"$work/cmake.log" 2>&1 || { cat "$work/cmake.log"; fail "CMake: $language"; }
  make -C "$sample" CC=$gcc CXX=$gxx >"$work/make.log" 2>&1 || { cat "$work/make.log"; fail "make: $language"; }
done
# Build the sample in C also for Microsoft's ABI. Use MinGW's headers, but not its printf functions and start
# code, because these are for GNU's linker.
import msvcrt _setmode wprintf exit
mkdir "$tree/samples/c/microsoft"
echo 'int main(void); void exit(int code); void Start(void) { exit(main()); }' >"$work/start.c"
for source in "$tree/samples/c/first.c" "$work/start.c"; do
  clang --target=x86_64-pc-windows-msvc -std=c11 -O1 -nostdinc -isystem "$(clang -print-resource-dir)/include" \
    -isystem /usr/share/mingw-w64/include -D__USE_MINGW_ANSI_STDIO=0 -Wall -Wextra -Werror \
    "-I$tree/include" -c "$source" -o "$work/$(basename "$source" .c).obj" ||
    fail "does not compile for Microsoft's ABI: $source"
done
lld-link /nodefaultlib /entry:Start /subsystem:console "/out:$tree/samples/c/microsoft/first.exe" \
  "$work/first.obj" "$work/start.obj" "$work/msvcrt.lib" "$tree/lib/TesselSLB_c.lib" ||
  fail "does not link for Microsoft's ABI"
cp "$tree"/bin/*.dll "$tree/samples/c/microsoft/"

serve "$tree/bin" "$tree/scenes/orders.json"
note="Over both panes"
for program in cpp/build cpp c/build c c/microsoft; do
  output=$(set -o pipefail && "$root/cmake/run-wine.sh" "$tree/samples/$program/first.exe" | tr -d '\r') ||
    fail "the sample in $program ended with $?"
  [ "$output" = "the note was \"$note\"" ] || fail "the sample in $program: $output"
  note=Delivered
done
"$root/cmake/run-wine.sh" "$tree/bin/host.exe" || fail "the host in C ended with $?"
stop_broker 5
