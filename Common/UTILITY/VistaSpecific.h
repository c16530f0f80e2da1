// Runs in the client and in the broker. The security attributes of server pipes and of the
// injection mutex.
#pragma once

#include <windows.h>

// Returns attributes that let processes of every integrity level, even low, open the object with
// full access. The first call builds the attributes. They stay valid until the process ends, and
// the caller does not free them. Returns null, which means default security, if the access list
// cannot be built. Throws std::system_error if the integrity label cannot be built; the next call
// then tries again. Any thread may call this function.
SECURITY_ATTRIBUTES* GetPipeSecurityAttributes();
