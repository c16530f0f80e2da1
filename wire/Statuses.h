// Runs in the client and in the broker. The status numbers. The first value of each answer is a
// status.
#pragma once

#include "TesselCodes.h"

namespace wire {

// A broker may also use other numbers. The client receives every status unchanged.
enum Status : int {
  kSuccess = SL_SUCCESS,
  kNotServed = SL_NOT_SERVED,  // after this status a search asks the broker of the next scheme

  // Every broker should use the next four numbers where they fit.
  kUnknownCommand = 100,
  kUnknownElement = 101,
  kNotSupported = 102,  // the element has no such attribute, state or item
  kMalformedRequest = 103,

  // A broker that replays a recording uses this number.
  kNotRecorded = 104,
};

}  // namespace wire
