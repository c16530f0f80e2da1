// Runs in the client. The exports that read an element's properties.
#include "TesselSLB/ElementCall.h"
#include "logging/Log.h"

namespace TesselSilverlight {

int GetElementValue(const SLElemData& elem, CComBSTR& /*value*/) {
  if (!CheckObject(elem)) return SL_INVALID_OBJECT;
  return E_NOTIMPL;
}

int GetElemRectangle(const SLElemData& elem, RECT& rect) {
  if (!CheckObject(elem)) return SL_INVALID_OBJECT;
  return CallObject(wire::Command::kRectangle, elem, NoArguments,
                    [&](JArchive& answer) { ReadRectangle(answer, rect); });
}

int GetAttribute(const SLElemData& elem, wchar_t* const name, wchar_t** value) {
  if (!CheckObject(elem)) return SL_INVALID_OBJECT;
  if (name == nullptr || *name == L'\0') {
    LOG_ERROR("Invalid attribute name");
    return SL_INVALID_ARGUMENT;
  }
  if (value == nullptr) {
    LOG_ERROR("Invalid out param");
    return SL_INVALID_ARGUMENT;
  }
  return CallObject(
      wire::Command::kAttribute, elem,
      [&](JArchive& request) { request << static_cast<const wchar_t*>(name); },
      [&](JArchive& answer) {
        CComBSTR text;
        answer >> text;
        *value = text.Detach();
      });
}

int GetItems(const SLElemData& elem, int flag,
             std::vector<CComBSTR, HeapAllocator<CComBSTR>>& items) {
  if (!CheckObject(elem)) return SL_INVALID_OBJECT;
  return CallObject(
      wire::Command::kItems, elem, [&](JArchive& request) { request << (flag != 0); },
      [&](JArchive& answer) { answer >> items; });
}

}  // namespace TesselSilverlight
