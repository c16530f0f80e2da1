// Runs in the client and in the broker. Computes the name of a broker's pipe from the address of
// the content. The client that opens the pipe and the host that creates the pipe use the same
// functions.
#pragma once

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>

#include "TesselCodes.h"

namespace wire {

// Returns the name of the scheme for the log, for example "SL_HTTP_URI".
inline const char* SchemeName(unsigned long scheme) {
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

// Returns the scheme that the address starts with, or nothing if it starts with no known scheme.
// Upper case does not match: "HTTP:" is not a scheme.
inline std::optional<SLUriScheme> GetUriScheme(std::wstring_view address) {
  if (address.starts_with(L"https:")) return SL_HTTPS_URI;
  if (address.starts_with(L"http:")) return SL_HTTP_URI;
  if (address.starts_with(L"file:")) return SL_FILE_URI;
  return std::nullopt;
}

// Returns the part of the address before its third slash, which is the scheme and the host. For a
// file, returns the part before the sixth slash. Returns the whole address if it has fewer slashes,
// and nothing if it has no known scheme.
inline std::optional<std::wstring_view> GetUriOrigin(std::wstring_view address) {
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

namespace detail {

inline constexpr std::wstring_view kPipeBaseName =
    L"\\\\.\\pipe\\Tessel.Orbitane.SilverlightBridge.Pipe.Name";
inline constexpr std::size_t kLongestPipeName = 255;

// Returns the result of isalnum in the C locale for the low byte of the unit. Ignores the high
// byte.
inline bool IsPlainLetterOrDigit(wchar_t unit) {
  const auto low = static_cast<unsigned char>(unit);
  return (low >= '0' && low <= '9') || (low >= 'A' && low <= 'Z') || (low >= 'a' && low <= 'z');
}

// Returns the origin of the address, cut to `longest` units. Replaces all units except letters and
// digits by '_'.
inline std::wstring CleanedOrigin(std::wstring_view address, std::size_t longest) {
  std::wstring origin(GetUriOrigin(address).value_or(L"").substr(0, longest));
  std::replace_if(
      origin.begin(), origin.end(), [](wchar_t unit) { return !IsPlainLetterOrDigit(unit); }, L'_');
  return origin;
}

}  // namespace detail

// Returns the pipe's name, or an empty name if the scheme has no pipe. Only the tailored scheme
// uses the address.
inline std::wstring PipeName(unsigned long scheme, std::wstring_view address) {
  std::wstring name(detail::kPipeBaseName);
  switch (scheme) {
    case SL_HTTP_URI:
      return name += L".HTTP";
    case SL_HTTPS_URI:
      return name += L".HTTPS";
    case SL_FILE_URI:
      return name += L".FILE";
    case SL_TAILORED_URI:
      name += L".TAILORED";
      return name += detail::CleanedOrigin(address, detail::kLongestPipeName - name.size());
    default:
      return {};
  }
}

}  // namespace wire
