// Runs in the client and in the broker. ATL's exception for a failed HRESULT, for compilers without
// ATL.
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
