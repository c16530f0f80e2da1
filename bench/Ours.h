// The rows of this module: its archive where there is one, else the JSON floor beneath it.
#pragma once

#ifdef _WIN32
#include "OursArchive.h"
#else
#include "OursJson.h"
#endif

#include <cstdlib>

#include "json/SpareBlock.h"

namespace bench {

// What the module keeps for its next message must not count as free for that message. Another
// large block, which fits next to nothing, takes the place of the one kept.
inline void DropSpares() {
#ifdef _WIN32
  TakeSpareContent();
#endif
  base::FreeBlock({std::malloc(base::kLeastSpareBytes), base::kLeastSpareBytes});
}

}  // namespace bench
