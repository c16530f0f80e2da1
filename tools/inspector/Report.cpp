#include "tools/inspector/Report.h"

#include <utility>

namespace {

std::string Dumped(const Json& json, int indent) {
  return json.dump(indent, ' ', false /*UTF-8*/, Json::error_handler_t::replace) + '\n';
}

}  // namespace

Json RectJson(const RECT& rect) {
  return Json::array({rect.left, rect.top, rect.right, rect.bottom});
}

std::string RectText(const Json& rect) {
  std::string text;
  for (const Json& edge : rect) text += (text.empty() ? "" : ", ") + edge.dump();
  return '[' + text + ']';
}

std::string TextOf(const Json& json) { return Dumped(json, 2 /*indent*/); }

std::string LineOf(const Json& json) { return Dumped(json, -1 /*no line feeds*/); }

Report::Report(const tessel::Element& element) { Add("element", tessel::Narrow(element.Id())); }

void Report::Add(const std::string& key, const std::string& text) {
  SetField(key, text);
  AddLine(key + ": " + tessel::Printable(text));
}

void Report::Add(const std::string& key, long long number) {
  SetField(key, number);
  AddLine(key + ": " + std::to_string(number));
}

void Report::AddList(const std::string& key, const std::vector<Entry>& entries) {
  Json list = Json::array();
  AddLine(key + ": " + std::to_string(entries.size()));
  for (const Entry& entry : entries) {
    list.push_back(entry.json);
    AddLine("  " + entry.text);
  }
  SetField(key, std::move(list));
}

void Report::AddTexts(const std::string& key, const std::vector<std::wstring>& texts) {
  std::vector<Entry> entries;
  entries.reserve(texts.size());
  for (const std::wstring& text : texts) {
    entries.push_back({tessel::Narrow(text), tessel::Printable(tessel::Narrow(text))});
  }
  AddList(key, entries);
}
