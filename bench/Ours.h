// The rows of this module. On Windows they use its archive. Natively there is no archive, so they
// use the JSON library below it.
#pragma once

#ifdef _WIN32
#include "OursArchive.h"
#else
#include "OursJson.h"
#endif
