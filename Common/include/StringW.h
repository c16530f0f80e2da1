// Runs in the client and in the broker. A shared UTF-16 string with the layout of ATL's class: one
// pointer to the first UTF-16 unit. A header before the first unit names the manager that allocated
// the buffer. Only this manager frees the buffer, so programs and DLLs that were built separately
// can exchange strings. Several threads may use copies of one string at the same time.
#pragma once

#include <windows.h>

#include <climits>
#include <cwchar>

#include "AtlException.h"

namespace ATL {

struct StringHeader;

// The virtual table is part of the interface: exactly these five functions in this order, and no
// virtual destructor.
struct StringManager {
  virtual StringHeader* Allocate(int units, int unitSize) noexcept = 0;
  virtual void Free(StringHeader* header) noexcept = 0;
  virtual StringHeader* Reallocate(StringHeader* header, int units, int unitSize) noexcept = 0;
  virtual StringHeader* GetNilString() noexcept = 0;
  virtual StringManager* Clone() noexcept = 0;
};

struct StringHeader {
  bool IsLocked() const noexcept { return references < 0; }
  wchar_t* Text() noexcept { return reinterpret_cast<wchar_t*>(this + 1); }

  StringManager* manager;
  int length;       // the number of UTF-16 units, without the terminator
  int capacity;     // the greatest length that fits into the buffer
  long references;  // the number of strings that share the buffer; negative if it may not be shared
};
static_assert(sizeof(StringHeader) == 24);

// Allocates buffers on the process heap. Each program and each DLL has its own manager.
class HeapStringManager final : public StringManager {
 public:
  static HeapStringManager* Instance() noexcept {
    static HeapStringManager instance;
    return &instance;
  }

  StringHeader* Allocate(int units, int unitSize) noexcept override {
    const SIZE_T size = SizeOf(units, unitSize);
    if (size == 0) return nullptr;
    auto* header = static_cast<StringHeader*>(::HeapAlloc(::GetProcessHeap(), 0 /*flags*/, size));
    if (header != nullptr) *header = {this, 0, units, 1};
    return header;
  }
  void Free(StringHeader* header) noexcept override {
    ::HeapFree(::GetProcessHeap(), 0 /*flags*/, header);
  }
  StringHeader* Reallocate(StringHeader* header, int units, int unitSize) noexcept override {
    const SIZE_T size = SizeOf(units, unitSize);
    if (size == 0) return nullptr;
    auto* moved =
        static_cast<StringHeader*>(::HeapReAlloc(::GetProcessHeap(), 0 /*flags*/, header, size));
    if (moved != nullptr) moved->capacity = units;
    return moved;
  }
  StringHeader* GetNilString() noexcept override {
    ::InterlockedIncrement(&nil_.header.references);
    return &nil_.header;
  }
  StringManager* Clone() noexcept override { return this; }

 private:
  HeapStringManager() noexcept { nil_.header = {this, 0, 0, 1}; }

  // Returns the size of the header, the units and the terminator in bytes. Returns 0 if the
  // arguments are out of range.
  static SIZE_T SizeOf(int units, int unitSize) noexcept {
    if (units < 0 || units == INT_MAX || unitSize <= 0) return 0;
    return sizeof(StringHeader) + (static_cast<SIZE_T>(units) + 1) * unitSize;
  }

  struct {
    StringHeader header;
    wchar_t terminator;
  } nil_ = {};  // the empty string; it starts with one reference, so it is never freed
};

class CStringW {
 public:
  CStringW() noexcept : text_(Nil(HeapStringManager::Instance())) {}
  CStringW(const wchar_t* text) : CStringW() { Assign(text, LengthOf(text)); }
  CStringW(const CStringW& other) : text_(CloneOf(other.text_)) {}
  CStringW(CStringW&& other) noexcept : text_(other.text_) { other.text_ = Nil(ManagerOf(text_)); }
  // A client may have set the string object itself to zero bytes (memset). Then there is nothing to
  // release.
  ~CStringW() { Release(text_); }

  // The comparison of the pointers also detects self-assignment.
  // NOLINTNEXTLINE(bugprone-unhandled-self-assignment)
  CStringW& operator=(const CStringW& other) {
    if (text_ == other.text_) return *this;
    StringHeader* source = HeaderOf(other.text_);
    if (source != nullptr && !source->IsLocked() && source->manager == ManagerOf(text_)) {
      ::InterlockedIncrement(&source->references);
      Replace(other.text_);
    } else {
      Assign(other.GetString(), other.GetLength());
    }
    return *this;
  }
  CStringW& operator=(CStringW&& other) noexcept {
    if (this != &other) {
      Replace(other.text_);
      other.text_ = Nil(ManagerOf(text_));
    }
    return *this;
  }
  CStringW& operator=(const wchar_t* text) {
    Assign(text, LengthOf(text));
    return *this;
  }

  int GetLength() const noexcept { return text_ == nullptr ? 0 : HeaderOf(text_)->length; }
  bool IsEmpty() const noexcept { return GetLength() == 0; }
  const wchar_t* GetString() const noexcept { return text_ == nullptr ? L"" : text_; }
  operator const wchar_t*() const noexcept { return GetString(); }

  void Empty() noexcept {
    if (!IsEmpty()) Replace(Nil(ManagerOf(text_)));
  }

 private:
  static StringHeader* HeaderOf(wchar_t* text) noexcept {
    return text == nullptr ? nullptr : reinterpret_cast<StringHeader*>(text) - 1;
  }
  static StringManager* ManagerOf(wchar_t* text) noexcept {
    return text == nullptr ? HeapStringManager::Instance() : HeaderOf(text)->manager;
  }
  static wchar_t* Nil(StringManager* manager) noexcept { return manager->GetNilString()->Text(); }
  static int LengthOf(const wchar_t* text) {
    const std::size_t length = text == nullptr ? 0 : std::wcslen(text);
    if (length >= INT_MAX) AtlThrow(E_INVALIDARG);
    return static_cast<int>(length);
  }

  static wchar_t* CopyOf(StringManager* manager, const wchar_t* text, int length) {
    if (length == 0) return Nil(manager);
    StringHeader* header = manager->Allocate(length, sizeof(wchar_t));
    if (header == nullptr) AtlThrow(E_OUTOFMEMORY);
    std::wmemcpy(header->Text(), text, static_cast<std::size_t>(length));
    header->Text()[length] = L'\0';
    header->length = length;
    return header->Text();
  }

  static wchar_t* CloneOf(wchar_t* text) {
    StringHeader* source = HeaderOf(text);
    if (source == nullptr) return Nil(HeapStringManager::Instance());
    StringManager* manager = source->manager->Clone();
    if (source->IsLocked() || manager != source->manager) {
      return CopyOf(manager, text, source->length);
    }
    ::InterlockedIncrement(&source->references);
    return text;
  }

  static void Release(wchar_t* text) noexcept {
    StringHeader* header = HeaderOf(text);
    if (header != nullptr && ::InterlockedDecrement(&header->references) <= 0) {
      header->manager->Free(header);
    }
  }

  void Assign(const wchar_t* text, int length) { Replace(CopyOf(ManagerOf(text_), text, length)); }
  void Replace(wchar_t* text) noexcept {
    Release(text_);
    text_ = text;
  }

  wchar_t* text_;
};

}  // namespace ATL
