#include "wire/Addresses.h"

#include <algorithm>

namespace wire {

namespace {

constexpr std::wstring_view kPipeBaseName =
    L"\\\\.\\pipe\\Tessel.Orbitane.SilverlightBridge.Pipe.Name";
constexpr std::size_t kLongestPipeName = 255;

// Returns the result of isalnum in the C locale for the low byte of the unit. Ignores the high
// byte.
bool IsPlainLetterOrDigit(wchar_t unit) {
  const auto low = static_cast<unsigned char>(unit);
  return (low >= '0' && low <= '9') || (low >= 'A' && low <= 'Z') || (low >= 'a' && low <= 'z');
}

std::wstring CleanedOrigin(std::wstring_view address, std::size_t longest) {
  std::wstring origin(GetUriOrigin(address).value_or(L"").substr(0, longest));
  std::replace_if(
      origin.begin(), origin.end(), [](wchar_t unit) { return !IsPlainLetterOrDigit(unit); }, L'_');
  return origin;
}

}  // namespace

const char* SchemeName(unsigned long scheme) {
  switch (scheme) {
    case SL_NO_URI:
      return "SL_NO_URI";
    case SL_HTTP_URI:
      return "SL_HTTP_URI";
    case SL_HTTPS_URI:
      return "SL_HTTPS_URI";
    case SL_FILE_URI:
      return "SL_FILE_URI";
    case SL_TAILORED_URI:
      return "SL_TAILORED_URI";
    default:
      return "UNKNOWN SCHEME";
  }
}

std::optional<SLUriScheme> GetUriScheme(std::wstring_view address) {
  if (address.starts_with(L"https:")) return SL_HTTPS_URI;
  if (address.starts_with(L"http:")) return SL_HTTP_URI;
  if (address.starts_with(L"file:")) return SL_FILE_URI;
  return std::nullopt;
}

std::optional<std::wstring_view> GetUriOrigin(std::wstring_view address) {
  const std::optional<SLUriScheme> scheme = GetUriScheme(address);
  if (!scheme) return std::nullopt;
  const int slashes = *scheme == SL_FILE_URI ? 6 : 3;
  std::size_t slash = 0;
  for (int i = 0; i < slashes; ++i) {
    slash = address.find(L'/', slash + 1);
    if (slash == std::wstring_view::npos) return address;
  }
  return address.substr(0, slash);
}

std::wstring PipeName(unsigned long scheme, std::wstring_view address) {
  std::wstring name(kPipeBaseName);
  switch (scheme) {
    case SL_HTTP_URI:
      return name += L".HTTP";
    case SL_HTTPS_URI:
      return name += L".HTTPS";
    case SL_FILE_URI:
      return name += L".FILE";
    case SL_TAILORED_URI:
      name += L".TAILORED";
      return name += CleanedOrigin(address, kLongestPipeName - name.size());
    default:
      return {};
  }
}

}  // namespace wire
