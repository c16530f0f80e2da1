#!/usr/bin/env bash
# run.sh BUILD: installs the build into a folder, and renames the folder to test that its files work anywhere.
# Compiles each installed header alone, and the headers for hosts also as C. Builds the first program of each
# client library (first.cpp, first.c) with CMake and with pkg-config, and runs it against the installed broker.
set -eu
build=$1
work=$build/install-test
. "$(dirname "${BASH_SOURCE[0]}")/../support/broker.sh"
need clang++ clang
need pkg-config pkgconf
gcc=x86_64-w64-mingw32-gcc-posix
gxx=x86_64-w64-mingw32-g++-posix

rm -rf "$work"
mkdir -p "$work"
cmake --install "$build" --prefix "$work/made" >/dev/null
tree="$work/moved tree"
mv "$work/made" "$tree"
grep -rF "$root" "$tree/include" "$tree/lib/cmake" "$tree/lib/pkgconfig" &&
  fail "installed files hold the path of the source folder"

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
for compiler in x86_64-w64-mingw32-gcc-posix 'clang --target=x86_64-w64-mingw32'; do
  $compiler -std=c11 -Wall -Wextra -Werror -pedantic "-I$tree/include" -c "$root/tests/install/host.c" \
    -o "$work/host.obj" || fail "does not compile as C11: $compiler"
done

cmake -S "$root/tests/install" -B "$work/cmake" -G Ninja -DCMAKE_SYSTEM_NAME=Windows \
  -DCMAKE_C_COMPILER=$gcc -DCMAKE_CXX_COMPILER=$gxx -DCMAKE_PREFIX_PATH="$tree" -DCLIENTS="$root/clients" \
  >"$work/cmake.log" 2>&1 &&
  cmake --build "$work/cmake" >>"$work/cmake.log" 2>&1 || { cat "$work/cmake.log"; fail "CMake"; }
# build PROGRAM PACKAGE COMPILER...: builds a program with the options of pkg-config.
build() {
  local options
  options=$(PKG_CONFIG_LIBDIR="$tree/lib/pkgconfig" pkg-config --cflags --libs "$2 >= 1.0")
  eval "${*:3} -o '$work/$1' $options" || fail "pkg-config $2"
}
build first_cpp.exe TesselSLB "$gxx" -std=c++20 -static "$root/clients/cpp/first.cpp"
build first_c.exe TesselSLB_c "$gcc" "$root/clients/c/first.c"
build host.exe TesselSLB "$gcc" "$work/host.obj"

serve "$tree/bin" "$root/tools/scenes/login.json"
# Windows finds the DLLs in the current folder.
run() { (set -o pipefail && cd "$tree/bin" && "$root/cmake/run-wine.sh" "$@" | tr -d '\r'); }
value=zoë
for program in cmake/first_cpp first_cpp cmake/first_c first_c; do
  [ "$(run "$work/$program.exe")" = "the value was \"$value\"" ] || fail "$program"
  value=Ada
done
run "$work/host.exe" || fail "the host in C ended with $?"
stop_broker 4
