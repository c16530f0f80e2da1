// A broker's host in C. Includes the two headers for hosts, and calls functions of each kind.
#include <TesselHost.h>
#include <TesselTrace.h>

static LONG_PTR __stdcall Handle(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  return window != NULL && message == WM_APP && wparam == 0 && lparam == 0;
}

int main(void) {
  const int code = InitComm(SL_NO_URI, 0, L"http://install.example/");
  DTrace(2, L"a host in C");
  if (AdditionalWindow_Create(0) == NULL) return 1;
  AdditionalWindow_RegisterCallback(0, &Handle);
  AdditionalWindow_Destroy(0);
  return code == SL_CHANNEL_CLOSED && UninitComm() == SL_CHANNEL_NOT_INITIALIZED ? 0 : 2;
}
