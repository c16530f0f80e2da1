// Part of tessel and SceneBroker. Reads window handles from the command line, and prints to the
// console.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>

#include "tessel/Text.h"

namespace tools {

// Converts "0x..." with hexadecimal digits to a handle. Returns null for any other text.
HWND HandleFromText(std::string_view text);

// Returns the name of a file or a pipe for one line of a terminal. Unlike tessel::Printable, keeps
// backslashes as they are.
std::string PrintablePath(std::wstring_view path);

// Makes the console show the tool's output as UTF-8.
void PrepareConsole();

// Prints a line to standard output and flushes, so that a program that reads the output through a
// pipe gets the line at once.
void PrintLine(std::string_view text);

}  // namespace tools
