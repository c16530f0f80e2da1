// What every fuzzer needs: a way to say that a property does not hold, and units made of bytes.
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

// A byte of ASCII is its unit, 0xFF starts any unit, any other byte one of the upper half: so bytes
// that were changed at random still give text with all kinds of surrogates in it.
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
