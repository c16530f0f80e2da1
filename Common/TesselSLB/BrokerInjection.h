// Client process. Brings the broker into the process behind a window, with the injector program.
#pragma once

#include <windows.h>

// 0 or an SLResult. One injection at a time in the whole logon session: waits up to 30 s for
// others, then about 10 s for its own.
int InjectBroker(HWND window);

// One run of the injector: 0 or an SLResult.
int RunInjector(HWND window, DWORD processId);
