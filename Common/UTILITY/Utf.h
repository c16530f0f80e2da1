// Both processes. The platform's conversions between UTF-16 and UTF-8: what is ill-formed becomes
// U+FFFD.
#pragma once

#include <string>
#include <string_view>

std::string ToUtf8(std::wstring_view text);
std::wstring ToUtf16(std::string_view text);

// The units that ToUtf16 gives, and the conversion into a buffer of that size.
int Utf16Length(std::string_view text);
void CopyAsUtf16(std::string_view text, wchar_t* buffer, int units);
