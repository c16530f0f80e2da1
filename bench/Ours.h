// Reads and writes the text of a message with this project's own code. On Windows, this is the
// archive (JArchive), which element calls use. The archive needs Windows, so the Linux benchmarks
// use the JSON library on which the archive is built.
#pragma once

#ifdef _WIN32
#include "OursArchive.h"
#else
#include "OursJson.h"
#endif
