// Helpers of every fuzzer: a check of a property, and UTF-16 text made from the input's bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "json/Utf.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

inline void Require(bool holds, const char* property) {
  if (holds) return;
  std::fprintf(stderr, "does not hold: %s\n", property);
  std::abort();
}

// Makes UTF-16 units from bytes. An ASCII byte becomes one unit. After the byte 0xFF, the next two
// bytes become one unit of any value. Any other byte and the next byte become one unit of 0x8000 or
// above. So bytes that the fuzzer changes at random still make text with all kinds of surrogates.
inline base::Utf16Text UnitsOf(const std::uint8_t* data, std::size_t size) {
  base::Utf16Text text;
  for (std::size_t i = 0; i < size; ++i) {
    unsigned unit = data[i];
    for (int more = unit < 0x80 ? 0 : unit < 0xFF ? 1 : 2; more > 0 && i + 1 < size; --more)
      unit = unit << 8 | data[++i];
    text += static_cast<base::Utf16Unit>(unit);
  }
  return text;
}
