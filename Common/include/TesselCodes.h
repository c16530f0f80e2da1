// Both processes. The numbers of the interface: the schemes, and the result codes of the element
// functions. C11 and C++17.
#pragma once

#include "TesselApi.h"

// Selects the broker of an element.
enum SLUriScheme TESSELSLB_AS_ULONG {
  SL_NO_URI = 0,  // not known yet; the functions that search set the scheme
  SL_HTTP_URI = 1,
  SL_HTTPS_URI = 2,
  SL_FILE_URI = 3,
  SL_TAILORED_URI = 4,  // a broker for this content alone
};

// The results of the element functions. Any other value is a status of the broker, returned
// unchanged.
enum SLResult TESSELSLB_AS_INT {
  SL_SUCCESS = 0,
  SL_FAILURE = -3,  // the injection lock was not obtained, or the broker refused a release
  SL_INVALID_ARGUMENT = -5,
  SL_CANNOT_READ = -6,         // the broker sent no answer within 18 s, or closed the pipe
  SL_CANNOT_CONNECT = -7,      // the broker's pipe cannot be opened or written to
  SL_NOT_SERVED = -8,          // the broker does not show this content
  SL_BROKER_NOT_STARTED = -9,  // invalid scheme, no launcher, or no broker 15 s after its start
  SL_INJECTOR_NOT_STARTED = -10,
  SL_INJECTION_FAILED = -11,  // the injector failed, or did not end within 10 s
  SL_ARCHIVE_FAILURE = -12,   // the answer ends early, or a value has the wrong type
  SL_INVALID_OBJECT = -13,    // the record does not name an element
};
