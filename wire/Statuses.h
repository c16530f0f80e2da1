// Both processes. The statuses of the bridge: the first value of every answer.
#pragma once

#include "TesselCodes.h"

namespace wire {

// A broker may use other numbers for reasons of its own. A client receives any of them unchanged.
enum Status : int {
  kSuccess = SL_SUCCESS,
  kNotServed = SL_NOT_SERVED,  // a client that searches goes on to the next scheme

  // Recommended to every broker.
  kUnknownCommand = 100,
  kUnknownElement = 101,
  kNotSupported = 102,  // the element does not have what was asked for
  kMalformedRequest = 103,
};

}  // namespace wire
