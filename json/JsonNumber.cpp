#include "json/JsonNumber.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <system_error>

namespace base {

namespace {

// Takes a number outside the range of doubles. Returns true if the number is too close to zero,
// false if it is too large. std::from_chars returns the same error for both.
bool IsTiny(std::string_view number) {
  const std::size_t exponent_at = std::min(number.find_first_of("eE"), number.size());
  const std::string_view mantissa = number.substr(0, exponent_at);
  const std::size_t first = mantissa.find_first_of("123456789");
  if (first == std::string_view::npos) return true;
  const std::size_t point = std::min(mantissa.find('.'), mantissa.size());
  std::int64_t magnitude = static_cast<std::int64_t>(point) - static_cast<std::int64_t>(first);

  std::string_view digits = number.substr(std::min(exponent_at + 1, number.size()));
  const bool negative = digits.starts_with('-');
  if (negative || digits.starts_with('+')) digits.remove_prefix(1);
  std::int64_t exponent = 0;
  constexpr std::int64_t kEnough = std::numeric_limits<std::int64_t>::max() / 32;
  for (const char c : digits) exponent = std::min(exponent * 10 + (c - '0'), kEnough);
  magnitude += negative ? -exponent : exponent;
  return magnitude < 0;
}

}  // namespace

std::optional<double> ParseDouble(std::string_view number) {
  double value = 0;
  const auto result = std::from_chars(number.data(), number.data() + number.size(), value);
  if (result.ec != std::errc::result_out_of_range) return value;
  if (!IsTiny(number)) return std::nullopt;
  return number.starts_with('-') ? -0.0 : 0.0;
}

}  // namespace base
