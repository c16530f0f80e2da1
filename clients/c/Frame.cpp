#include "clients/c/Frame.h"

#include <cwchar>

namespace tessel::c {
namespace {

ListEntry EntryOf(Element element, const std::shared_ptr<Lock>& lock, long number = 0) {
  std::wstring id = element.Id();
  return {std::move(id), std::make_shared<ElementObject>(std::move(element), lock), number};
}

tessel_list Add(std::vector<ListEntry> entries) {
  auto list = std::make_shared<ListObject>();
  list->entries = std::move(entries);
  return Handles().Add(std::move(list));
}

}  // namespace

Table& Handles() {
  static Table& table = *new Table;
  return table;
}

std::wstring_view Frame::Given(const wchar_t* text) const {
  if (text == nullptr) throw Invalid("a text is null");
  return text;
}

Search Frame::Given(const tessel_search* search) const {
  if (search == nullptr) throw Invalid("the search is null");
  const auto textOf = [](const wchar_t* text) { return text == nullptr ? L"" : text; };
  return {textOf(search->text1), textOf(search->text2), textOf(search->text3), search->option1,
          search->option2 != 0};
}

SLUriScheme Frame::GivenScheme(std::int32_t scheme) const {
  if (scheme < 0 || scheme > int{SL_TAILORED_URI}) throw Invalid("there is no such scheme");
  return static_cast<SLUriScheme>(scheme);
}

LockedContent Frame::LockContent(tessel_content content) const {
  return LockedContent(Find<ContentObject>(content));
}

void Frame::RequireHeld(const ElementObject& element) const {
  if (element.element->Record().hwnd == nullptr) throw Error(kBadHandle, call_);
}

LockedElement Frame::LockElement(tessel_element element) const {
  LockedElement locked(Find<ElementObject>(element));
  RequireHeld(*locked.object);
  return locked;
}

Error Frame::Invalid(const std::string& meaning) const {
  return {SL_INVALID_ARGUMENT, meaning, "correct the argument", call_};
}

wchar_t* CopyOf(std::wstring_view text) {
  auto* const copy = static_cast<wchar_t*>(std::malloc((text.size() + 1) * sizeof(wchar_t)));
  if (copy == nullptr) throw std::bad_alloc();
  std::wmemcpy(copy, text.data(), text.size());
  copy[text.size()] = L'\0';
  return copy;
}

tessel_rectangle RectangleOf(const RECT& rect) {
  return {rect.left, rect.top, rect.right, rect.bottom};
}

tessel_element HandleOf(std::optional<Element> element, const std::shared_ptr<Lock>& lock) {
  if (!element) return 0;
  return Handles().Add(std::make_shared<ElementObject>(std::move(*element), lock));
}

tessel_list HandleOf(std::vector<Element> elements, const std::shared_ptr<Lock>& lock) {
  std::vector<ListEntry> entries;
  for (Element& element : elements) entries.push_back(EntryOf(std::move(element), lock));
  return Add(std::move(entries));
}

tessel_list HandleOf(std::vector<Ancestor> ancestors, const std::shared_ptr<Lock>& lock) {
  std::vector<ListEntry> entries;
  for (auto& [element, number] : ancestors) {
    entries.push_back(EntryOf(std::move(element), lock, number));
  }
  return Add(std::move(entries));
}

tessel_list HandleOf(std::vector<std::wstring> texts) {
  std::vector<ListEntry> entries;
  for (std::wstring& text : texts) entries.push_back({std::move(text), nullptr});
  return Add(std::move(entries));
}

}  // namespace tessel::c
