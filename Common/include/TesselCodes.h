// Both processes. The numbers of the interface, for C11 and C++17: the schemes, and the result
// codes of the element functions.
#pragma once

#include "TesselApi.h"

// Which broker serves an element.
enum SLUriScheme TESSELSLB_AS_ULONG {
  SL_NO_URI = 0,  // not known yet: the searching functions find it
  SL_HTTP_URI = 1,
  SL_HTTPS_URI = 2,
  SL_FILE_URI = 3,
  SL_TAILORED_URI = 4,  // a broker of this content's own
};

// What the functions return. Any other value is the broker's own status, passed on unchanged.
enum SLResult TESSELSLB_AS_INT {
  SL_SUCCESS = 0,
  SL_FAILURE = -3,  // the lock of injections was not obtained; the broker refused a release
  SL_INVALID_ARGUMENT = -5,
  SL_CANNOT_READ = -6,         // the broker sent no answer within 18 s, or left
  SL_CANNOT_CONNECT = -7,      // the broker's pipe cannot be opened or written to
  SL_NOT_SERVED = -8,          // the broker's status for content that it does not show
  SL_BROKER_NOT_STARTED = -9,  // no such scheme, no launcher, or no broker 15 s after its start
  SL_INJECTOR_NOT_STARTED = -10,
  SL_INJECTION_FAILED = -11,  // the injector failed or took too long
  SL_ARCHIVE_FAILURE = -12,   // the answer is too short, or not what was asked for
  SL_INVALID_OBJECT = -13,    // the record does not name an element
};
