// The values that the benchmarks write as the text of messages and read from this text.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Unicode.h"

namespace bench {

enum class Kind : std::uint8_t { kInt, kText };

struct Value {
  Kind kind;
  std::int32_t number;
  Text text;

  bool operator==(const Value&) const = default;
};
using Values = std::vector<Value>;

struct Workload {
  std::string name;
  Values values;
  std::vector<Kind> kinds;  // of each value; a measured reader knows them before it reads
};

// Returns a view of the text, for writers whose result is a string.
inline TextView ViewOf(const Text& text) { return text; }

Workload MakeRequest();
Workload MakeEntries();
Workload MakeTexts();
Workload MakeLongText();
std::vector<Workload> AllWorkloads();

Workload MakeInts(std::size_t count);
Workload MakeShortTexts(std::size_t count);

}  // namespace bench
