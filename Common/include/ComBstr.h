// Runs in the client and in the broker. CComBSTR owns a BSTR. It has the layout of ATL's class with
// this name: one pointer.
#pragma once

#include <windows.h>
// oleauto.h needs windows.h before it
#include <oleauto.h>

#include <memory>
#include <utility>

#include "AtlException.h"

namespace ATL {

class CComBSTR {
 public:
  CComBSTR() noexcept = default;
  CComBSTR(const wchar_t* text) : m_str(Allocated(::SysAllocString(text), text != nullptr)) {}
  CComBSTR(const CComBSTR& other) : m_str(other.Copy()) {}
  CComBSTR(CComBSTR&& other) noexcept : m_str(other.Detach()) {}
  ~CComBSTR() { ::SysFreeString(m_str); }

  CComBSTR& operator=(const CComBSTR& other) {
    if (this != std::addressof(other)) Attach(other.Copy());
    return *this;
  }
  CComBSTR& operator=(CComBSTR&& other) noexcept {
    if (this != std::addressof(other)) Attach(other.Detach());
    return *this;
  }
  CComBSTR& operator=(const wchar_t* text) { return *this = CComBSTR(text); }

  // Returns a copy that the caller owns, or null if there is no text. Keeps zeros inside the text.
  BSTR Copy() const {
    if (m_str == nullptr) return nullptr;
    return Allocated(
        ::SysAllocStringByteLen(reinterpret_cast<const char*>(m_str), ::SysStringByteLen(m_str)),
        true);
  }

  void Attach(BSTR text) noexcept {
    if (text == m_str) return;
    ::SysFreeString(m_str);
    m_str = text;
  }
  BSTR Detach() noexcept { return std::exchange(m_str, nullptr); }
  void Empty() noexcept { Attach(nullptr); }

  unsigned int Length() const noexcept { return ::SysStringLen(m_str); }
  operator BSTR() const noexcept { return m_str; }
  bool operator!() const noexcept { return m_str == nullptr; }
  BSTR* operator&() noexcept { return &m_str; }

  BSTR m_str = nullptr;

 private:
  static BSTR Allocated(BSTR text, bool wanted) {
    if (text == nullptr && wanted) AtlThrow(E_OUTOFMEMORY);
    return text;
  }
};

}  // namespace ATL
