// Runs in the client. The exports that return the element at a point, the focused element and an
// element's parent, and the export that releases an element.
#include "TesselSLB/ElementCall.h"
#include "logging/Log.h"

namespace TesselSilverlight {

int GetElemFromPoint(SLElemData& window, const POINT& pt, int option, SLElemData& found) {
  return CallWindow(
      wire::Command::kElementFromPoint, window, [&](JArchive& request) { request << pt << option; },
      [&](JArchive& answer) {
        CComBSTR objectId;
        answer >> objectId;
        NameElement(found, window, objectId);
      });
}

int GetFocusedElement(HWND hwnd, SLElemData& focused) {
  // This record never names an element, so its destructor logs "Invalid SL object".
  SLElemData window;
  window.hwnd = hwnd;
  window.sourceUri = focused.sourceUri;
  return CallWindow(wire::Command::kFocusedElement, window, NoArguments, [&](JArchive& answer) {
    CComBSTR objectId;
    answer >> objectId;
    NameObject(focused, window, objectId);
  });
}

int GetParentElement(const SLElemData& child, SLElemData& parent) {
  if (!CheckObject(child)) return SL_INVALID_OBJECT;
  return CallObject(wire::Command::kParent, child, NoArguments, [&](JArchive& answer) {
    CComBSTR objectId;
    answer >> objectId;
    if (objectId.Length() == 0) return;
    NameElement(parent, child, objectId);
  });
}

int ReleaseObj(SLElemData& obj) {
  if (!CheckObject(obj)) return SL_INVALID_OBJECT;
  bool released = false;
  const int code = CallWindow(wire::Command::kRelease, obj, NoArguments,
                              [&](JArchive& answer) { answer >> released; });
  if (code != SL_SUCCESS) return code;
  if (!released) {
    LOG_ERROR("Release failed");
    return SL_FAILURE;
  }
  return SL_SUCCESS;
}

}  // namespace TesselSilverlight
