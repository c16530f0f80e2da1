// Part of tessel. Says what an address means to the module, and which mistakes it may contain.
#pragma once

#include <string>

#include "tools/inspector/doctor/Step.h"

// The state of the step is kNote if the address probably contains a mistake. It is never kBroken,
// because a broker may serve any text as an address.
Step CheckAddress(const std::wstring& address);
