// Both tools. Text between the UTF-16 of Windows and the UTF-8 that the tools work in and print.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>

namespace tools {

// What is ill-formed becomes U+FFFD.
std::string Narrow(std::wstring_view text);
std::wstring Wide(std::string_view text);

// On one line of a terminal: what would act on it is written as an escape, \n, \x1b or \u202e, and
// a backslash as two.
std::string Printable(std::string_view text);

// The same in double quotes. A double quote of the text gets a backslash before it.
std::string Quoted(std::string_view text);

std::string HandleText(HWND window);

// The value of "0x..."; null for any other text.
HWND HandleFromText(std::string_view text);

// Lets the console show UTF-8.
void PrepareConsole();

// One line to standard output, at once, so that whoever reads the other end of a pipe sees it.
void PrintLine(std::string_view text);

}  // namespace tools
