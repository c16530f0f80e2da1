#include "Scene.h"

namespace soak {

namespace {

std::string Utf8(const std::wstring& text) {
  std::string utf8(text.size() * 3, '\0');
  utf8.resize(static_cast<std::size_t>(
      ::WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), utf8.data(),
                            static_cast<int>(utf8.size()), nullptr, nullptr)));
  return utf8;
}

std::string ElementText(int broker, int element) {
  const RECT rect = ElementRect(element);
  const std::string name = Utf8(ElementName(broker, element));
  std::string text = R"({"id": ")" + Utf8(ElementId(broker, element)) + R"(", "rect": [)" +
                     std::to_string(rect.left) + "," + std::to_string(rect.top) + "," +
                     std::to_string(rect.right) + "," + std::to_string(rect.bottom) +
                     R"(], "attributes": {"name": ")" + name + R"(", "type": "Box"})";
  if (element != kPage) {
    text += R"(, "parent": ")" + Utf8(ElementId(broker, kPage)) + R"(", "items": [")" + name +
            R"( one", ")" + Utf8(SecondItem(broker, element)) +
            R"("], "states": {"value": "", "checked": false, "selected": ")" + name + R"( one"})";
  }
  return text + "}";
}

}  // namespace

std::string SceneText(int broker, DWORD run) {
  std::string elements;
  for (int i = 0; i < kElements; ++i) elements += (i == 0 ? "" : ",\n") + ElementText(broker, i);
  return R"({"version": 1, "address": ")" + Utf8(SceneAddress(broker, run)) +
         R"(", "title": "soak", "elements": [)" + elements + "]}";
}

}  // namespace soak
