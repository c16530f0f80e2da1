// Used by the client and by the broker's host. The numbers of the interface: the schemes, and the
// result codes of the element functions. C11 and C++17.
#pragma once

#include "TesselApi.h"

// Selects the broker that serves an element. There is one broker each for http, https and file.
enum SLUriScheme TESSELSLB_AS_ULONG {
  SL_NO_URI = 0,  // not known yet; functions that search for the broker set the scheme
  SL_HTTP_URI = 1,
  SL_HTTPS_URI = 2,
  SL_FILE_URI = 3,
  SL_TAILORED_URI = 4,  // a broker for one site alone, which is one scheme and host
};

// The results of the element functions. GetElementValue also returns E_NOTIMPL. Any other value is
// a status of the broker, returned unchanged.
enum SLResult TESSELSLB_AS_INT {
  SL_SUCCESS = 0,
  // The injection mutex cannot be created, another client held it for more than 30 s, or the broker
  // refused to release an element.
  SL_FAILURE = -3,
  SL_INVALID_ARGUMENT = -5,  // no such window, or an argument is null or empty
  // The broker disconnected, or sent nothing for 18 s. Each part of an answer has this time-out,
  // too.
  SL_CANNOT_READ = -6,
  SL_CANNOT_CONNECT = -7,  // the broker's pipe cannot be opened or written to, or is busy for 18 s
  SL_NOT_SERVED = -8,      // the broker does not show this content
  // Invalid scheme, the launcher is missing or cannot be started, or no broker's pipe appeared
  // within 15 s.
  SL_BROKER_NOT_STARTED = -9,
  SL_INJECTOR_NOT_STARTED = -10,  // slinject.exe cannot be started
  SL_INJECTION_FAILED = -11,      // the injector failed, or did not end within 10 s
  SL_ARCHIVE_FAILURE = -12,       // the answer ends early, or a value has the wrong type
  SL_INVALID_OBJECT = -13,        // the record does not name an element
};
