#!/usr/bin/env bash
# run.sh BUILD: installs the build into a folder and then renames the folder. Compiles each installed
# header alone, and the headers for hosts also as C. Builds a client with CMake and with pkg-config, and
# runs it against the installed broker.
set -eu
build=$1
work=$build/install-test
. "$(dirname "${BASH_SOURCE[0]}")/../support/broker.sh"
need clang++ clang
need pkg-config pkgconf
gcc=x86_64-w64-mingw32-g++-posix

rm -rf "$work"
mkdir -p "$work"
cmake --install "$build" --prefix "$work/made" >/dev/null
tree="$work/moved tree"
mv "$work/made" "$tree"
grep -rF "$root" "$tree/include" "$tree/lib/cmake" "$tree/lib/pkgconfig" &&
  fail "installed files hold the path of the source folder"

library=$("$gcc" -print-file-name=include/c++)
clang=(clang++ --target=x86_64-w64-mingw32 -nostdinc++ -isystem "$library"
       -isystem "$library/x86_64-w64-mingw32" -isystem "$library/backward")
# compile STANDARD HEADER...: compiles a source that includes only these headers, with both compilers.
compile() {
  local flags=("-std=c++$1" -Wall -Wextra -Wpedantic -Werror -fsyntax-only "-I$tree/include")
  printf '#include <%s>\n' "${@:2}" >"$work/source.cpp"
  "$gcc" "${flags[@]}" "$work/source.cpp" && "${clang[@]}" "${flags[@]}" "$work/source.cpp" ||
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
  -DCMAKE_CXX_COMPILER=$gcc -DCMAKE_PREFIX_PATH="$tree" -DCLIENT_SOURCE="$root/clients/cpp/first.cpp" >"$work/cmake.log" 2>&1 &&
  cmake --build "$work/cmake" >>"$work/cmake.log" 2>&1 || { cat "$work/cmake.log"; fail "CMake"; }
options=$(PKG_CONFIG_LIBDIR="$tree/lib/pkgconfig" pkg-config --cflags --libs 'TesselSLB >= 1.0')
eval "$gcc -static -o '$work/client.exe' '$root/tests/install/client.cpp' $options" || fail "pkg-config"
eval "x86_64-w64-mingw32-gcc-posix -o '$work/host.exe' '$work/host.obj' $options" || fail "a host in C"

serve "$tree/bin" "$root/tools/scenes/login.json"
# expect TEXT PROGRAM ARGUMENT...: the program, run in the installed bin folder, prints this text.
expect() {
  local output
  output=$(cd "$tree/bin" && "$root/cmake/run-wine.sh" "${@:2}" | tr -d '\r')
  [ "$output" = "$1" ] || fail "$2: $output"
}
expect 'the value was "zoë"' "$work/cmake/client.exe"
expect 'user 0 TextBox' "$work/client.exe" "$(fact window)"
(cd "$tree/bin" && "$root/cmake/run-wine.sh" "$work/host.exe") || fail "the host in C ended with $?"
stop_broker 2
