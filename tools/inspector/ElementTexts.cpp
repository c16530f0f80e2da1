#include "tools/inspector/ElementTexts.h"

#include "tools/shared/ConsoleText.h"
#include "wire/Statuses.h"

namespace {

// Returns no value if the broker answers with the status `refusal`. If `refusal` is SL_SUCCESS,
// every failure throws, so a value is always returned.
std::optional<std::string> Attribute(const Content& content, const SLElemData& element,
                                     const std::string& name, int refusal) {
  std::wstring wideName = tools::Wide(name);
  CComBSTR text;
  const bool has =
      content.Try("read the attribute " + tools::Quoted(name) + " of " + NameOf(element), refusal,
                  [&] { return TesselSilverlight::GetAttribute(element, wideName.data(), &text); });
  if (!has) return std::nullopt;
  return TextOf(text);
}

std::optional<std::vector<std::string>> Items(const Content& content, const SLElemData& element,
                                              int refusal) {
  std::vector<CComBSTR, HeapAllocator<CComBSTR>> items;
  const bool has = content.Try("read the items of " + NameOf(element), refusal, [&] {
    return TesselSilverlight::GetItems(element, 0 /*flag*/, items);
  });
  if (!has) return std::nullopt;
  std::vector<std::string> texts;
  texts.reserve(items.size());
  for (const CComBSTR& item : items) texts.push_back(TextOf(item));
  return texts;
}

}  // namespace

std::string TextOf(const CComBSTR& text) { return tools::Narrow({text.m_str, text.Length()}); }

std::string ReadAttribute(const Content& content, const SLElemData& element,
                          const std::string& name) {
  return *Attribute(content, element, name, SL_SUCCESS);
}

std::vector<std::string> ReadItems(const Content& content, const SLElemData& element) {
  return *Items(content, element, SL_SUCCESS);
}

std::optional<std::string> TryAttribute(const Content& content, const SLElemData& element,
                                        const std::string& name) {
  return Attribute(content, element, name, wire::kNotSupported);
}

std::optional<std::vector<std::string>> TryItems(const Content& content,
                                                 const SLElemData& element) {
  return Items(content, element, wire::kNotSupported);
}
