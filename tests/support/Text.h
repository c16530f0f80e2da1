// Splits texts and reads text files.
#pragma once

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <utility>
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

// Splits a text at the first `mark`. Without a mark, the second part is empty.
inline std::pair<std::string, std::string> Cut(const std::string& text, const std::string& mark) {
  const std::size_t end = std::min(text.find(mark), text.size());
  return {text.substr(0, end), text.substr(std::min(end + mark.size(), text.size()))};
}

inline std::string FileText(const std::filesystem::path& path,
                            std::ios::openmode mode = std::ios::in) {
  std::ifstream file(path, mode);
  return {std::istreambuf_iterator<char>(file), {}};
}
