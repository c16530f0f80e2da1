#!/usr/bin/env bash
# run.sh BUILD: tests that the clients in C++ and in C print the same report of the sign-in form. Clang
# compiles the C client once more for Microsoft's binary interface. This third client has no start-up code.
set -eu
work=$1/clients-test
. "$(dirname "${BASH_SOURCE[0]}")/../support/broker.sh"
need clang clang
need lld-link lld
need llvm-dlltool llvm
rm -rf "$work"
mkdir -p "$work"

import kernel32 WideCharToMultiByte
import msvcrt printf _wgetenv exit
clang --target=x86_64-pc-windows-msvc -std=c11 -O1 -ffreestanding -nostdinc \
  -isystem "$(clang -print-resource-dir)/include" -isystem /usr/x86_64-w64-mingw32/include \
  -D__USE_MINGW_ANSI_STDIO=0 -Wall -Wextra -Werror "-I$root/clients/c" "-I$root/Common/include" \
  -c "$root/tests/clients/report.c" -o "$work/report.obj"
lld-link /nodefaultlib /entry:Start /subsystem:console "/out:$work/report_msabi.exe" "$work/report.obj" \
  "$work"/*.lib "$1/lib/TesselSLB_c.lib"

export TITLE='Café Größe – Sign in' ADDRESS=http://shop.example/portal/login.html
cd "$1/bin"  # Windows finds the DLLs in the current folder
for program in "$1/bin/report_cpp.exe" "$1/bin/report_c.exe" "$work/report_msabi.exe"; do
  serve "$1/bin" "$root/tools/scenes/login.json"
  "$root/cmake/run-wine.sh" "$program" "$TITLE" "$ADDRESS" >"$work/report.txt" || fail "$program ended with $?"
  stop_broker 19
  diff --strip-trailing-cr "$root/tests/clients/expected.txt" "$work/report.txt" || fail "$program"
done
