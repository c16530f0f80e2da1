// The rows of this module: its archive where there is one, else the JSON floor beneath it.
#pragma once

#ifdef _WIN32
#include "OursArchive.h"
#else
#include "OursJson.h"
#endif
