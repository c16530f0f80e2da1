#include "jarchive.h"

#include <utility>

#include "UTILITY/Utf.h"
#include "json/Check.h"
#include "json/JsonReader.h"
#include "json/JsonWriter.h"

using Tessel::ArchiveException;

namespace {

// The JSON floor knows no log; what it refuses as a broken invariant is told here.
const struct CheckReporter {
  CheckReporter() {
    base::SetCheckFailedHook(
        [](const char* condition) { LOG_FATAL("Check failed: %s", condition); });
  }
} checkReporter;

}  // namespace

JArchive::JArchive() : list_(std::make_shared<base::ListValue>()) {}

std::wstring JArchive::toString() const {
  std::string utf8;
  if (!base::WriteJson(*list_, utf8)) throw ArchiveException("json toString failed");
  return ToUtf16(utf8);
}

void JArchive::fromString(std::wstring_view text) {
  std::optional<base::Value> value = base::ReadJson(ToUtf8(text));
  if (!value) throw ArchiveException("Cannot parse json_array");
  base::ListValue* list = value->GetIfList();
  if (list == nullptr) throw ArchiveException("json array expected");
  list_ = std::make_shared<base::ListValue>(std::move(*list));
  cursor_ = 0;
}

JArchive& JArchive::operator<<(std::int32_t value) {
  LOG_INFO("Archive: write int");
  list_->Append(base::Value(value));
  return *this;
}

JArchive& JArchive::operator<<(bool value) {
  LOG_INFO("Archive: write bool");
  list_->Append(base::Value(value));
  return *this;
}

JArchive& JArchive::operator<<(const wchar_t* text) {
  LOG_INFO("Archive: write LPCWSTR");
  if (text == nullptr) throw ArchiveException("Invald string");
  list_->Append(base::Value(ToUtf8(text)));
  return *this;
}

JArchive& JArchive::operator<<(const CComBSTR& text) {
  return *this << static_cast<const wchar_t*>(text.m_str);
}

JArchive& JArchive::operator<<(const POINT& point) {
  return *this << static_cast<std::int32_t>(point.x) << static_cast<std::int32_t>(point.y);
}

JArchive& JArchive::operator>>(std::int32_t& value) {
  const std::optional<std::int32_t> element = Current().GetIfInt();
  if (!element) throw ArchiveException("number expected");
  value = *element;
  ++cursor_;
  return *this;
}

JArchive& JArchive::operator>>(bool& value) {
  const std::optional<bool> element = Current().GetIfBool();
  if (!element) throw ArchiveException("boolean expected");
  value = *element;
  ++cursor_;
  return *this;
}

JArchive& JArchive::operator>>(std::string& utf8) {
  Current();  // at the end of the archive the target stays as it is
  utf8.clear();
  utf8 = CurrentString();
  ++cursor_;
  return *this;
}

JArchive& JArchive::operator>>(CComBSTR& text) {
  // A BSTR is made from zero-terminated text.
  std::string_view utf8 = CurrentString();
  utf8 = utf8.substr(0, utf8.find('\0'));
  const int units = Utf16Length(utf8);
  const BSTR read = ::SysAllocStringLen(nullptr, static_cast<UINT>(units));
  if (read == nullptr) ATL::AtlThrow(E_OUTOFMEMORY);
  CopyAsUtf16(utf8, read, units);
  text.Attach(read);
  ++cursor_;
  return *this;
}

const base::Value& JArchive::Current() const {
  if (cursor_ >= list_->size()) throw ArchiveException("End of archive reached");
  return (*list_)[cursor_];
}

std::string_view JArchive::CurrentString() const {
  const std::optional<std::string_view> element = Current().GetIfString();
  if (!element) throw ArchiveException("string expected");
  return *element;
}
