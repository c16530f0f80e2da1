// Both tools. Converts text between the UTF-16 of Windows and the UTF-8 of the tools, and prints
// it.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>

namespace tools {

// Convert UTF-16 to UTF-8 and back. Ill-formed parts become U+FFFD.
std::string Narrow(std::wstring_view text);
std::wstring Wide(std::string_view text);

// Returns the text for one line of a terminal. Characters that would change how the terminal shows
// other text become escapes (\n, \x1b, \u202e), and each backslash becomes two.
std::string Printable(std::string_view text);

// Returns the printable text in double quotes. A double quote in it becomes \".
std::string Quoted(std::string_view text);

std::string HandleText(HWND window);

// Returns the handle that a text "0x..." names. Returns null for any other text.
HWND HandleFromText(std::string_view text);

// Lets the console show UTF-8.
void PrepareConsole();

// Prints a line to standard output and flushes, so that a program that reads it through a pipe gets
// it at once.
void PrintLine(std::string_view text);

}  // namespace tools
