// Runs in the client. The exports that make the broker act on an element. The answers contain only
// the status.
#include "TesselSLB/ElementCall.h"
#include "logging/Log.h"

namespace TesselSilverlight {

int ClickElem(const SLElemData& elem, int /*reserved1*/, int /*reserved2*/) {
  if (!CheckObject(elem)) return SL_INVALID_OBJECT;
  return CallObject(wire::Command::kClick, elem, NoArguments, NoResults);
}

int SetValue(const SLElemData& elem, const CComBSTR& text) {
  if (!CheckObject(elem)) return SL_INVALID_OBJECT;
  if (text.m_str == nullptr) {
    LOG_ERROR("Invalid text");
    return SL_INVALID_ARGUMENT;
  }
  return CallObject(
      wire::Command::kSetValue, elem, [&](JArchive& request) { request << text; }, NoResults);
}

int SetFocus(const SLElemData& elem) {
  if (!CheckObject(elem)) return SL_INVALID_OBJECT;
  return CallObject(wire::Command::kSetFocus, elem, NoArguments, NoResults);
}

int CheckElem(const SLElemData& elem, int check) {
  if (!CheckObject(elem)) return SL_INVALID_OBJECT;
  return CallObject(
      wire::Command::kCheck, elem, [&](JArchive& request) { request << (check != 0); }, NoResults);
}

int SelectItem(const SLElemData& elem, const CComBSTR& item) {
  if (!CheckObject(elem)) return SL_INVALID_OBJECT;
  return CallObject(
      wire::Command::kSelectItem, elem, [&](JArchive& request) { request << item; }, NoResults);
}

}  // namespace TesselSilverlight
