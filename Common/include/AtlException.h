// Runs in the client and in the broker. The exception that ATL throws for a failed HRESULT. Used
// only with compilers that have no ATL.
#pragma once

#include <windows.h>

namespace ATL {

class CAtlException {
 public:
  explicit CAtlException(HRESULT hr) noexcept : m_hr(hr) {}
  operator HRESULT() const noexcept { return m_hr; }

  HRESULT m_hr;
};

[[noreturn]] inline void AtlThrow(HRESULT hr) { throw CAtlException(hr); }

}  // namespace ATL
