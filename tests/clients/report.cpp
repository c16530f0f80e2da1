// Reads and changes the sign-in form with the C++ library, and prints the results. The programs in
// other languages print the same.
#include <cstdio>
#include <string>

#include "tessel/Client.h"

using tessel::Content;
using tessel::Element;
using tessel::Narrow;

namespace {

void Print(const std::string& line) { std::printf("%s\n", line.c_str()); }

std::string TextOf(const std::optional<std::wstring>& text) {
  return text ? '"' + Narrow(*text) + '"' : "none";
}

std::string TextOf(const RECT& r) {
  return '[' + std::to_string(r.left) + ' ' + std::to_string(r.top) + ' ' +
         std::to_string(r.right) + ' ' + std::to_string(r.bottom) + ']';
}

std::string IdOf(const std::optional<Element>& element) {
  return element ? Narrow(element->Id()) : "none";
}

void PrintElement(Element& element) {
  Print(Narrow(element.Id()) + ' ' + TextOf(element.Record().rect) + ' ' +
        TextOf(element.Attribute(L"type")));
}

void PrintPlace(Element& list) {
  const auto items = list.Items();
  for (const std::wstring& item : *items) Print("item " + Narrow(item));
  for (const auto& [element, number] : list.Ancestors()) {
    Print("ancestor " + Narrow(element.Id()) + ' ' + std::to_string(number));
  }
  for (const Element& link : list.Selector()) Print("selector " + Narrow(link.Id()));
  const std::optional<Element> parent = list.Parent();
  const tessel::Identity own = list.Identify(), relative = list.Identify(*parent);
  Print("identity " + Narrow(own.text1 + L'|' + own.text2 + L'|' + own.text3) + ' ' +
        std::to_string(own.number) + ' ' + std::to_string(relative.number));
  Print("parent " + IdOf(parent) + ", rectangle " + TextOf(list.Rectangle()));
}

template <class Action>
void PrintErrorOf(Action action) {
  try {
    action();
  } catch (const tessel::Error& error) {
    Print("error " + std::to_string(error.code) + ' ' + error.name + ": " + error.meaning + "; " +
          error.cure + " (" + error.function + ", \"" + Narrow(error.elementId) + "\", " +
          Narrow(error.address) + ')');
  }
}

void Drive(Content& content, Element& user, Element& list) {
  user.SetValue(L"Zo\u00eb \U0001d11e");
  Print("value " + TextOf(user.Attribute(L"value")));
  list.Select(L"\u0141\u00f3d\u017a");
  Print("selected " + TextOf(list.Attribute(L"selected")));
  Element box = *content.At({320, 344});
  box.Check();
  tessel::WaitUntil(tessel::AttributeIs(box, L"checked", L"true"), std::chrono::seconds(5));
  box.Click();
  Print(Narrow(box.Id()) + ' ' + TextOf(box.Attribute(L"checked")));
  list.SetFocus();
  Print("focus " + IdOf(content.Focused()));
}

void Fail(Content& content, Element& user) {
  using std::chrono::milliseconds;
  Print("at " + IdOf(content.At({-1, -1})) + ", attribute " + TextOf(user.Attribute(L"nope")) +
        ", items " + (user.Items() ? "some" : "none"));
  PrintErrorOf([&] { user.Select(L"x"); });
  PrintErrorOf([&] { WaitUntil(tessel::IsThere(content, {.text3 = L"nobody"}), milliseconds(0)); });
  PrintErrorOf([&] { WaitUntil(tessel::IsGone(content, {.text3 = L"user"}), milliseconds(0)); });
}

}  // namespace

// Arguments: the title and the address of the content.
int wmain(int, wchar_t** arguments) {
  Content content(std::wstring_view(arguments[1]), arguments[2]);
  for (Element& element : content.Find({})) PrintElement(element);
  Element user = *content.FindFirst({.text3 = L"user"});
  Element list = *content.FindFirst({.text2 = L"ListBox"});
  PrintPlace(list);
  Drive(content, user, list);
  Fail(content, user);
  return 0;
}
