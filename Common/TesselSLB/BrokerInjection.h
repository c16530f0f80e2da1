// Client process. Brings the broker into the process that owns a window, with the injector program.
#pragma once

#include <windows.h>

// Returns 0 or an SLResult. Only one injection runs at a time in the whole logon session: the
// function waits up to 30 s for those of other clients, then about 10 s for its own.
int InjectBroker(HWND window);

// Runs the injector once. Returns 0 or an SLResult.
int RunInjector(HWND window, DWORD processId);
