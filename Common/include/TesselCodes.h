// Used by the client and by the broker's host. The numbers of the interface: the schemes, and the
// result codes of the element functions. For C11 and C++17.
#pragma once

#include "TesselApi.h"

// Selects the broker that serves an element. There is one broker each for http, https and file.
enum SLUriScheme TESSELSLB_AS_ULONG {
  SL_NO_URI = 0,  // not known yet; functions that search for the broker set the scheme
  SL_HTTP_URI = 1,
  SL_HTTPS_URI = 2,
  SL_FILE_URI = 3,
  // A broker for one site only: all addresses that have the same beginning. TesselSilverlight.h
  // says how long this beginning is.
  SL_TAILORED_URI = 4,
};

// The results of the element functions. GetElementValue also returns E_NOTIMPL. Any other value is
// a status, which is a number that the broker sent. The functions return it unchanged.
enum SLResult TESSELSLB_AS_INT {
  SL_SUCCESS = 0,
  // The mutex that allows only one injection at a time cannot be created, another client held this
  // mutex for more than 30 s, or the broker answered that it has not released the element.
  SL_FAILURE = -3,
  SL_INVALID_ARGUMENT = -5,  // no such window, or an argument is null or empty
  // The broker disconnected, or sent nothing for 18 s. An answer may arrive in parts, and the 18 s
  // apply to each part.
  SL_CANNOT_READ = -6,
  SL_CANNOT_CONNECT = -7,  // the broker's pipe cannot be opened or written to, or is busy for 18 s
  SL_NOT_SERVED = -8,      // the broker does not show this content
  // The scheme is invalid, sllauncher.exe is missing or cannot be started, or the broker's pipe did
  // not appear within 15 s.
  SL_BROKER_NOT_STARTED = -9,
  SL_INJECTOR_NOT_STARTED = -10,  // slinject.exe cannot be started
  SL_INJECTION_FAILED = -11,      // the injector failed, or did not end within 10 s
  // The answer is not a JSON array, ends early, or contains a value of the wrong type. Or
  // SelectItem got a null text.
  SL_ARCHIVE_FAILURE = -12,
  // A record is not valid (TesselSilverlight.h says what a valid record is), FindCollection's root
  // has no window, or GetIdInfo's records have different processes or schemes.
  SL_INVALID_OBJECT = -13,
};
