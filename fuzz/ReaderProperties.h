// Checks the properties that the JSON readers for UTF-8 and for UTF-16 must have with every text.
#pragma once

#include <memory>
#include <string_view>

#include "fuzz/PlainUtf.h"
#include "json/JsonReader.h"

struct Document {
  base::ValueType type;
  base::ListValue values;
};

// Returns null if the text is refused.
template <class Text>
std::unique_ptr<Document> Read(Text text, std::size_t step = base::kReadStep) {
  auto document = std::make_unique<Document>();
  const auto type = base::ReadJson(text, document->values, step);
  if (!type) return nullptr;
  document->type = *type;
  return document;
}

// Reads the text. Checks that reading does not take too much memory, and that the values stay the
// same when they are written and read again. Returns null if the text is refused.
std::unique_ptr<Document> ReadChecked(std::string_view utf8);
std::unique_ptr<Document> ReadChecked(base::Utf16View text);

bool SameValues(const base::ListValue& a, const base::ListValue& b);
bool SameDocument(const std::unique_ptr<Document>& a, const std::unique_ptr<Document>& b);
