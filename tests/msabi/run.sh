#!/usr/bin/env bash
# run.sh BUILD: compiles and links a client for Microsoft's binary interface, and runs it with the module
# and a broker. TesselSLB.def lists the functions under the names that Microsoft's compiler gives them. The
# link fails if one of these names is wrong.
set -eu
work=$1/msabi-test
. "$(dirname "${BASH_SOURCE[0]}")/../support/broker.sh"
need clang++ clang
need lld-link lld
need llvm-dlltool llvm
rm -rf "$work"
mkdir -p "$work"

import kernel32 GetProcessHeap HeapAlloc HeapFree
import oleaut32 SysAllocString SysFreeString
import msvcrt printf wcslen wcscpy _wgetenv _wcstoui64 exit memset

clang++ --target=x86_64-pc-windows-msvc -std=c++20 -O1 -ffreestanding -nostdinc -fno-exceptions \
  -fno-rtti -fno-threadsafe-statics -Wall -Wextra -Werror \
  -c "$root/tests/msabi/client.cpp" -o "$work/client.obj"
lld-link /nodefaultlib /entry:Start /subsystem:console "/out:$work/client.exe" "$work/client.obj" \
  "$work"/*.lib "$1/lib/TesselSLB_x64.lib"

start_broker "$1/bin" http://msabi.example/
# Windows finds the module in the current folder.
cd "$1/bin"
WINDOW=$(fact window) timeout 60 "$root/cmake/run-wine.sh" "$work/client.exe" >"$work/client.txt" ||
  fail "the client ended with $?"
stop_broker 13
# Appends the requests and answers that the broker printed, without process ids, to the client's output.
sed -n 's/^served: \[\([0-9]*\),[0-9]*/[\1/p' "$work/broker.txt" >>"$work/client.txt"
diff --strip-trailing-cr "$root/tests/msabi/expected.txt" "$work/client.txt" || fail "unexpected results"
