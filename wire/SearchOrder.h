// Runs in the client. Which brokers a search asks, and in which order.
#pragma once

#include <string_view>
#include <vector>

#include "wire/Addresses.h"

namespace wire {

// Returns the schemes whose brokers a search asks: the tailored broker, and then the broker of the
// scheme that the address starts with. Only the answer kNotServed makes the search ask the next
// one.
inline std::vector<SLUriScheme> SchemesToTry(std::wstring_view address) {
  std::vector<SLUriScheme> schemes = {SL_TAILORED_URI};
  if (const std::optional<SLUriScheme> own = GetUriScheme(address)) schemes.push_back(*own);
  return schemes;
}

}  // namespace wire
