// Runs in the conductor (soak_conductor) and in the client (soak_client). The scene that a broker
// serves. The address, the ids and the names contain the broker's letter, so that a caller notices
// the answer of a wrong broker.
#pragma once

#include <windows.h>

#include <string>

namespace soak {

constexpr int kElements = 6;
constexpr int kPage = 0;      // the parent of all other elements; has no states and no items
constexpr int kUnknown = -1;  // an element that the scene does not have

inline std::wstring Letter(int broker) {
  return std::wstring(1, static_cast<wchar_t>(L'A' + broker));
}
inline std::wstring SceneAddress(int broker, DWORD run) {
  return L"http://" + Letter(broker) + std::to_wstring(run) + L".example/";
}
inline std::wstring ElementId(int broker, int element) {
  return Letter(broker) + L"-" + std::to_wstring(element);
}
inline std::wstring ElementName(int broker, int element) {
  return L"Größe 東京 " + ElementId(broker, element);
}
inline std::wstring SecondItem(int broker, int element) {
  return ElementName(broker, element) + L" two";
}
inline RECT ElementRect(int element) {
  if (element == kPage) return {0, 0, 640, 480};
  return {element * 50, 0, element * 50 + 40, 30};
}
inline POINT PointOf(int element) {
  if (element == kPage) return {1, 100};
  return {element * 50 + 5, 5};
}

// Returns the text of the scene file, in UTF-8.
std::string SceneText(int broker, DWORD run);

}  // namespace soak
