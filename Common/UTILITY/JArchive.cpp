#include "jarchive.h"

#include <climits>
#include <utility>

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

base::StringView StringOf(base::ValueView element) {
  const std::optional<base::StringView> text = element.GetIfString();
  if (!text) throw ArchiveException("string expected");
  return *text;
}

}  // namespace

JArchive::JArchive() : list_(std::make_shared<base::ListValue>()) {}

std::wstring JArchive::toString() const {
  std::wstring text;
  if (!base::WriteJson(*list_, text)) throw ArchiveException("json toString failed");
  return text;
}

void JArchive::fromString(std::wstring_view text) {
  auto list = std::make_shared<base::ListValue>();
  const std::optional<base::ValueType> type = base::ReadJson(text, *list);
  if (!type) throw ArchiveException("Cannot parse json_array");
  if (*type != base::ValueType::kList) throw ArchiveException("json array expected");
  list_ = std::move(list);
  cursor_ = 0;
}

JArchive& JArchive::operator<<(std::int32_t value) {
  LOG_INFO("Archive: write int");
  list_->AppendInt(value);
  return *this;
}

JArchive& JArchive::operator<<(bool value) {
  LOG_INFO("Archive: write bool");
  list_->AppendBool(value);
  return *this;
}

JArchive& JArchive::operator<<(const wchar_t* text) {
  LOG_INFO("Archive: write LPCWSTR");
  if (text == nullptr) throw ArchiveException("Invald string");
  list_->AppendString(base::UpToZero(text));
  return *this;
}

JArchive& JArchive::operator<<(const CComBSTR& text) {
  return *this << static_cast<const wchar_t*>(text.m_str);
}

JArchive& JArchive::operator<<(const POINT& point) {
  return *this << static_cast<std::int32_t>(point.x) << static_cast<std::int32_t>(point.y);
}

JArchive& JArchive::operator>>(std::int32_t& value) {
  const base::ValueView current = Current();
  const std::optional<std::int32_t> element = current.GetIfInt();
  if (!element) throw ArchiveException("number expected");
  value = *element;
  return MoveBehind(current);
}

JArchive& JArchive::operator>>(bool& value) {
  const base::ValueView current = Current();
  const std::optional<bool> element = current.GetIfBool();
  if (!element) throw ArchiveException("boolean expected");
  value = *element;
  return MoveBehind(current);
}

JArchive& JArchive::operator>>(std::string& utf8) {
  const base::ValueView current = Current();  // at the end of the archive the target stays as it is
  utf8.clear();
  utf8 = base::ToUtf8(StringOf(current));
  return MoveBehind(current);
}

JArchive& JArchive::operator>>(CComBSTR& text) {
  const base::ValueView current = Current();
  // A BSTR is made from zero-terminated text.
  const base::StringView utf16 = base::UpToZero(StringOf(current));
  const std::size_t units = base::Utf16Length(utf16);
  const BSTR read =
      units <= UINT_MAX ? ::SysAllocStringLen(nullptr, static_cast<UINT>(units)) : nullptr;
  if (read == nullptr) ATL::AtlThrow(E_OUTOFMEMORY);
  base::CopyAsUtf16(utf16, read);
  text.Attach(read);
  return MoveBehind(current);
}

base::ValueView JArchive::Current() const {
  if (cursor_ >= list_->ByteSize()) throw ArchiveException("End of archive reached");
  return list_->At(cursor_);
}

JArchive& JArchive::MoveBehind(base::ValueView element) {
  cursor_ = list_->StartBehind(element);
  return *this;
}
