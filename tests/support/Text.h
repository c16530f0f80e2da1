// Splits texts and reads text files.
#pragma once

#include <windows.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

using Texts = std::vector<std::string>;

// Splits a text at each `mark`. Returns no pieces for an empty text. A mark at the end adds no
// empty piece.
inline Texts Split(const std::string& text, const std::string& mark) {
  Texts pieces;
  for (std::size_t begin = 0, end = 0; begin < text.size(); begin = end + mark.size()) {
    end = std::min(text.find(mark, begin), text.size());
    pieces.push_back(text.substr(begin, end - begin));
  }
  return pieces;
}

inline std::string FileText(const std::filesystem::path& path) {
  std::ifstream file(path);
  return {std::istreambuf_iterator<char>(file), {}};
}

inline std::string Narrow(const wchar_t* text) {
  char buffer[4096] = {};
  ::WideCharToMultiByte(CP_UTF8, 0, text == nullptr ? L"(null)" : text, -1, buffer, 4096, nullptr,
                        nullptr);
  return buffer;
}
