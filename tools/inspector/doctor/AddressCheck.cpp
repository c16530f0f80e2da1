#include "tools/inspector/doctor/AddressCheck.h"

#include <algorithm>

#include "tessel/Text.h"
#include "tools/shared/CommandLine.h"
#include "wire/Addresses.h"

namespace {

std::wstring InSmallLetters(std::wstring text) {
  std::ranges::transform(text, text.begin(), [](wchar_t unit) {
    return unit >= L'A' && unit <= L'Z' ? static_cast<wchar_t>(unit + (L'a' - L'A')) : unit;
  });
  return text;
}

bool IsOneOf(wchar_t unit, std::wstring_view units) { return units.find(unit) != units.npos; }

// Returns the cure for the first mistake, or an empty text.
std::string CureOf(const std::wstring& address) {
  constexpr std::wstring_view kStray = L" \t\r\n\"'";
  if (address.empty() || IsOneOf(address.front(), kStray) || IsOneOf(address.back(), kStray)) {
    return "remove the blanks and quotes around the address";
  }
  const auto scheme = wire::GetUriScheme(address);
  if (!scheme && wire::GetUriScheme(InSmallLetters(address))) {
    return "write the scheme in small letters: " + tessel::Printable(tessel::Narrow(InSmallLetters(
                                                       address.substr(0, address.find(L':') + 1))));
  }
  if (!scheme) return "begin the address with http://, https:// or file:///";
  const std::wstring rest = address.substr(address.find(L':') + 1);
  if (IsOneOf(L'\\', rest.substr(0, 3))) return "write / instead of \\ after the scheme";
  // Two slashes are right before the name of a server, but not before a drive.
  const bool namesServer = rest.starts_with(L"//") && rest.find(L':') == rest.npos;
  if (*scheme == SL_FILE_URI && !rest.starts_with(L"///") && !namesServer) {
    return "write three slashes after file:";
  }
  if (*scheme != SL_FILE_URI && (!rest.starts_with(L"//") || rest.starts_with(L"///"))) {
    return "write two slashes after the scheme, then the host";
  }
  return {};
}

}  // namespace

Step CheckAddress(const std::wstring& address) {
  const auto scheme = wire::GetUriScheme(address);
  const auto origin = wire::GetUriOrigin(address);
  Step step = {"address", Step::State::kFound, "", CureOf(address)};
  if (!step.cure.empty()) step.state = Step::State::kNote;
  step.finding = tessel::Quoted(address) + ": scheme " +
                 (scheme ? tools::NameOfScheme(*scheme) : "unknown") + ", origin " +
                 (origin ? tessel::Quoted(*origin) : "none");
  if (scheme) step.facts["scheme"] = tools::NameOfScheme(*scheme);
  if (origin) step.facts["origin"] = tessel::Narrow(*origin);
  return step;
}
