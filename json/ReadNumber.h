// Runs in the client and in the broker. The grammar of JSON numbers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "json/Digits.h"
#include "json/JsonNumber.h"
#include "json/PackedOutput.h"
#include "json/TextInput.h"

namespace base {

// Reads integers of up to eight digits without a sign, several at a time, as long as a comma
// follows each of them. Ordinary messages contain such runs of numbers. Always stops after a comma,
// so a value must follow. Also stops when fewer than kUnits + kMaxDigits units (32 + 8) of text are
// left: it looks at 32 units at once, and ReadShortNumber always reads eight.
template <class Unit>
void ReadShortInts(TextInput<Unit>& in, PackedOutput& out) {
  const Unit* at = in.at;
  char* to = out.to();
  const Unit* block = nullptr;
  while (at != block && in.end - at >= NumberBits::kUnits + NumberBits::kMaxDigits &&
         IsDigit(*at)) {
    block = at;
    NumberBits bits = FindNumbers(block);
    while (const int count = bits.CountShort()) {
      if (count > 1 && *at == '0') break;
      to = packed::Put(to, ValueType::kInteger, ReadShortNumber(at, count));
      at += count + 1;
      bits.Skip(count + 1);
    }
  }
  in.at = at;
  out.MoveTo(to);
}

template <class Unit>
std::string ToAscii(const Unit* from, const Unit* end) {
  std::string ascii;
  for (; from != end; ++from) ascii += static_cast<char>(*from);
  return ascii;
}

// fraction = [ '.' digits ] [ ( 'e' | 'E' ) [ '+' | '-' ] digits ]
template <class Unit>
bool AcceptFraction(TextInput<Unit>& in) {
  if (in.Accept('.') && !in.AcceptDigits()) return false;
  if (in.Accept('e') || in.Accept('E')) {
    if (!in.Accept('-')) in.Accept('+');
    if (!in.AcceptDigits()) return false;
  }
  return in.AtDelimiter();
}

// number = [ '-' ] digits fraction
// No digit may follow a leading zero. The number becomes an integer if it has no fraction (and no
// exponent) and fits into 32 bits, else a double.
template <class Unit>
bool ReadNumber(TextInput<Unit>& in, PackedOutput& out) {
  const Unit* const start = in.at;
  const bool negative = in.Accept('-');
  const Unit* const digits = in.at;
  std::uint64_t magnitude = 0;  // wraps around if there are too many digits for an integer
  const Unit* digit = digits;
  for (; digit != in.end && IsDigit(*digit); ++digit)
    magnitude = magnitude * 10 + static_cast<unsigned>(*digit - '0');
  in.at = digit;
  const auto count = in.at - digits;
  if (count == 0 || (count > 1 && *digits == '0')) return false;

  const bool whole = in.AtDelimiter();
  if (whole && count <= 10 && magnitude <= 0x7FFFFFFFu + negative) {
    const auto value = static_cast<std::int64_t>(magnitude);
    out.Put(ValueType::kInteger, static_cast<std::int32_t>(negative ? -value : value));
    return true;
  }
  if (!whole && !AcceptFraction(in)) return false;
  const std::optional<double> value = ParseDouble(ToAscii(start, in.at));
  if (value) out.Put(ValueType::kDouble, *value);
  return value.has_value();
}

}  // namespace base
