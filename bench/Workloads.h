// What is read and written: program values, and the message text that stands for them.
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
  std::vector<Kind> kinds;  // of the values: what the reader knows
};

// What a writer gave, as text.
inline TextView ViewOf(const Text& text) { return text; }

Workload MakeRequest();
Workload MakeEntries();
Workload MakeTexts();
Workload MakeLongText();
std::vector<Workload> AllWorkloads();

Workload MakeInts(std::size_t count);
Workload MakeShortTexts(std::size_t count);

}  // namespace bench
