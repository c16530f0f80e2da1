// Runs in the client. Runs the injector program, which starts a broker inside the process that owns
// a window.
#pragma once

#include <windows.h>

// Runs the injector for the process that owns the window. Returns 0 or an SLResult. Only one
// injection runs at a time in a logon session: the function waits up to 30 s for the injections of
// other clients, and then about 10 s for its own injector.
int InjectBroker(HWND window);

// Runs the injector for the process `processId`. Calls NudgeWindow each second until the injector
// ends, at most about 10 s. Returns 0 or an SLResult.
int RunInjector(HWND window, DWORD processId);
