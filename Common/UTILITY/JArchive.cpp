#include "internal/jarchive.h"

#include <climits>
#include <utility>

#include "json/Check.h"
#include "json/JsonReader.h"
#include "json/JsonWriter.h"
#include "memory/ZeroSearch.h"

using Tessel::ArchiveException;

namespace {

// The code in json/ cannot log. When a condition that should hold does not hold, this code calls
// the hook with the text of the condition, and the hook writes the log line.
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

// Constructs the ListText explicitly, to save time: the variant's default constructor would first
// fill the object with zeros.
JArchive::JArchive() : content_(std::make_shared<Content>(std::in_place_type<base::ListText>)) {}

std::wstring JArchive::toString() const {
  std::wstring text;
  const std::wstring_view written = toString(text);
  if (text.empty()) text = written;
  return text;
}

std::wstring_view JArchive::toString(std::wstring& buffer) const {
  if (const auto* text = std::get_if<base::ListText>(content_.get())) return text->View();
  if (!base::WriteJson(Values(), buffer)) throw ArchiveException("json toString failed");
  return buffer;
}

void JArchive::fromString(std::wstring_view text) {
  base::ListValue values;
  const std::optional<base::ValueType> type = base::ReadJson(text, values);
  if (!type) throw ArchiveException("Cannot parse json_array");
  if (*type != base::ValueType::kList) throw ArchiveException("json array expected");
  if (content_.use_count() == 1) {
    content_->emplace<base::ListValue>(std::move(values));
  } else {
    content_ = std::make_shared<Content>(std::move(values));
  }
  cursor_ = 0;
}

JArchive& JArchive::operator<<(std::int32_t value) {
  LOG_INFO("Archive: write int");
  std::visit([value](auto& list) { list.AppendInt(value); }, *content_);
  return *this;
}

JArchive& JArchive::operator<<(bool value) {
  LOG_INFO("Archive: write bool");
  std::visit([value](auto& list) { list.AppendBool(value); }, *content_);
  return *this;
}

JArchive& JArchive::operator<<(const wchar_t* text) {
  LOG_INFO("Archive: write LPCWSTR");
  if (text == nullptr) throw ArchiveException("Invald string");
  const std::wstring_view whole = base::UpToZero(text);
  auto* const written = std::get_if<base::ListText>(content_.get());
  if (written == nullptr || !written->AppendString(whole)) Values().AppendString(whole);
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
  return MoveAfter(current);
}

JArchive& JArchive::operator>>(bool& value) {
  const base::ValueView current = Current();
  const std::optional<bool> element = current.GetIfBool();
  if (!element) throw ArchiveException("boolean expected");
  value = *element;
  return MoveAfter(current);
}

JArchive& JArchive::operator>>(std::string& utf8) {
  // If Current() throws an exception, `utf8` must stay unchanged. So clear `utf8` only after it.
  const base::ValueView current = Current();
  utf8.clear();
  utf8 = base::ToUtf8(StringOf(current));
  return MoveAfter(current);
}

JArchive& JArchive::operator>>(CComBSTR& text) {
  const base::ValueView current = Current();
  // The BSTR receives the text only up to its first zero.
  const base::StringView utf16 = base::UpToZero(StringOf(current));
  const std::size_t units = base::Utf16Length(utf16);
  const BSTR read =
      units <= UINT_MAX ? ::SysAllocStringLen(nullptr, static_cast<UINT>(units)) : nullptr;
  if (read == nullptr) ATL::AtlThrow(E_OUTOFMEMORY);
  base::CopyAsUtf16(utf16, read);
  text.Attach(read);
  return MoveAfter(current);
}

base::ListValue& JArchive::Values() const {
  if (const auto* text = std::get_if<base::ListText>(content_.get())) {
    base::ListValue values;
    base::ReadJson(text->View(), values);
    content_->emplace<base::ListValue>(std::move(values));
  }
  return std::get<base::ListValue>(*content_);
}

base::ValueView JArchive::Current() const {
  const base::ListValue& values = Values();
  if (cursor_ >= values.ByteSize()) throw ArchiveException("End of archive reached");
  return values.At(cursor_);
}

JArchive& JArchive::MoveAfter(base::ValueView element) {
  cursor_ += element.ByteSize();
  return *this;
}
