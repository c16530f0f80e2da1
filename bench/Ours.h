// The benchmark rows of this module. On Windows they use the module's archive (JArchive). Native
// programs have no archive, so they use the JSON library on which the archive is built.
#pragma once

#ifdef _WIN32
#include "OursArchive.h"
#else
#include "OursJson.h"
#endif
