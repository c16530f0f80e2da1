#include "tools/recording/RecordingText.h"

#include <charconv>

#include "tessel/Text.h"

namespace tools {
namespace {

constexpr char kUnits[] = "utf16";
constexpr std::size_t kDigits = 4;  // hexadecimal digits for each UTF-16 unit

std::string DigitsOf(const std::wstring& text) {
  std::wstring digits;
  for (const wchar_t unit : text) digits += tessel::detail::HexDigits(unit, kDigits);
  return tessel::Narrow(digits);
}

std::optional<std::wstring> FromDigits(const std::string& digits) {
  if (digits.size() % kDigits != 0) return std::nullopt;
  std::wstring text;
  for (std::size_t i = 0; i < digits.size(); i += kDigits) {
    unsigned short unit = 0;
    const char* const end = digits.data() + i + kDigits;
    const auto read = std::from_chars(digits.data() + i, end, unit, 16 /*base*/);
    if (read.ec != std::errc() || read.ptr != end) return std::nullopt;
    text += static_cast<wchar_t>(unit);
  }
  return text;
}

}  // namespace

nlohmann::ordered_json JsonOfText(const std::wstring& text) {
  const std::string narrow = tessel::Narrow(text);
  if (tessel::Wide(narrow) == text) return narrow;
  return {{kUnits, DigitsOf(text)}};
}

std::optional<std::wstring> TextOfJson(const nlohmann::ordered_json& json) {
  if (json.is_string()) return tessel::Wide(json.get<std::string>());
  const bool hasUnits = json.is_object() && json.contains(kUnits) && json[kUnits].is_string();
  return hasUnits ? FromDigits(json[kUnits].get<std::string>()) : std::nullopt;
}

}  // namespace tools
