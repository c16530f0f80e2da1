// client WINDOW: finds an element of the scene that run.sh serves, prints its id and an attribute,
// and releases it.
#include <TesselHost.h>
#include <TesselSilverlight.h>

#include <cstdio>
#include <cstdlib>

int main(int, char** arguments) {
  if (UninitComm() != SL_CHANNEL_NOT_INITIALIZED) return 1;
  const std::vector<long, HeapAllocator<long>> numbers = {1};
  std::vector<long, HeapAllocator<long>> copy;
  copy = numbers;  // a vector that uses the module's allocator can be copied
  if (copy != numbers) return 1;
  SLElemData window;
  window.hwnd = reinterpret_cast<HWND>(std::strtoull(arguments[1], nullptr, 16));
  window.sourceUri = L"http://shop.example/portal/login.html";
  SLElemData found;
  int code = TesselSilverlight::GetElemFromPoint(window, POINT{320, 134}, 0 /*option*/, found);
  if (code != SL_SUCCESS) return std::printf("not found: %d\n", code);
  wchar_t name[] = L"type";
  BSTR type = nullptr;
  code = TesselSilverlight::GetAttribute(found, name, &type);
  std::printf("%ls %d %ls\n", found.objectId, code, type);
  ::SysFreeString(type);
  return 0;
}
