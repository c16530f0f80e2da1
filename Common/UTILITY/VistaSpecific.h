// Both processes. The security attributes of server pipes and of the injection mutex.
#pragma once

#include <windows.h>

// Lets processes of any integrity level, low included, open the object with full access. Built on
// the first call, for the life of the process; the caller does not free it. Null: the access list
// could not be built, take the default security. Throws std::system_error when the label cannot be
// built; the next call then tries again. Callable from any thread.
SECURITY_ATTRIBUTES* GetPipeSecurityAttributes();
