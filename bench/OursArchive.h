// Reads and writes the text of a message with this project's archive (JArchive), as element calls
// do. Windows only.
#pragma once

#include "Workloads.h"
#include "internal/jarchive.h"

namespace bench {

class OursDocument {
 public:
  explicit OursDocument(TextView text) { archive_.fromString(text); }
  std::int32_t Int() {
    std::int32_t number = 0;
    archive_ >> number;
    return number;
  }
  HandedOut String() {
    HandedOut text;
    archive_ >> text;
    return text;
  }

 private:
  JArchive archive_;
};

// Returns the archive's text without a copy, as element calls do before they write a request.
inline TextView ViewOf(const JArchive& archive) {
  static Text buffer;
  return archive.toString(buffer);
}

inline JArchive WriteOurs(const Values& values) {
  JArchive archive;
  for (const Value& value : values) {
    if (value.kind == Kind::kInt) {
      archive << value.number;
    } else {
      archive << value.text.c_str();
    }
  }
  return archive;
}

}  // namespace bench
