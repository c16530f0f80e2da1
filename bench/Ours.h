// Reads and writes with this project's own code. On Windows, this is the archive (JArchive), which
// element calls use. Native programs have no archive, so they use the JSON library on which the
// archive is built.
#pragma once

#ifdef _WIN32
#include "OursArchive.h"
#else
#include "OursJson.h"
#endif
