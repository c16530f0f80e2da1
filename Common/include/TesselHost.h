// Broker's process. What the program that hosts the broker gets from the module: the server side of
// the bridge's pipe, and windows through which work reaches the thread that made them.
//
// The pipe, in turn: InitComm; then for each request ReadMessage (twice, when it says that the
// buffer is too small) and exactly one WriteMessage; at last UninitComm, from any thread and at any
// moment of another thread's ReadMessage or WriteMessage, which wakes a ReadMessage that waits. But
// for UninitComm, one thread at a time. Every failure has a
// code, and every code but -2 a line in the log; only exhausted memory (std::bad_alloc) passes, and
// std::system_error from InitComm when the pipe cannot be given its security. Texts are
// UTF-16, the requests and answers JSON arrays that the channel itself does not look at.
#pragma once

#include <windows.h>

#include "TesselApi.h"
#include "TesselCodes.h"

enum SLChannelResult TESSELSLB_AS_INT {
  SL_CHANNEL_SUCCESS = 0,
  SL_CHANNEL_NOT_INITIALIZED = -1,
  SL_CHANNEL_BUFFER_TOO_SMALL = -2,
  SL_CHANNEL_CLOSED = -3,       // no pipe name, misuse, or shut down
  SL_CHANNEL_NOT_CREATED = -4,  // the name is taken, or an old call still leaves: again
  SL_CHANNEL_INVALID_ARGUMENT = -5,
  SL_CHANNEL_CANNOT_READ = -6,  // the client left or sent nothing in 3 s, or the wait failed; go on
  SL_CHANNEL_CANNOT_WRITE = -7,  // it left or did not read in 3 s, or the text is empty; go on
  SL_CHANNEL_NO_CLIENT = -15,    // none came in time; go on with ReadMessage
};

#ifdef __cplusplus
extern "C" {
#endif

// Creates the pipe on which clients look for the broker of a scheme (an SLUriScheme value) and, for
// the tailored scheme, of a content address. `connectTimeout` is what each ReadMessage waits for a
// client, in milliseconds; 0xFFFFFFFF is without limit. `source` is the address, or the id of a
// string of the module's resources; null is an empty one. A channel that was open is closed first,
// unless another thread is in a ReadMessage or WriteMessage: that one is not woken, and its name
// stays taken (-4) until it leaves. So call UninitComm before.
// Result: 0, -3, -4.
TESSELSLB_API int __stdcall InitComm(unsigned long scheme, unsigned long connectTimeout,
                                     const wchar_t* source);

// Waits for a client and hands out its request. `*size` is the buffer's size in UTF-16 units,
// terminator included; one that is too small gives -2 with the size that is needed, and the next
// call hands out the same request at once. Result: 0, -1, -2, -3, -5, -6, -15.
TESSELSLB_API int __stdcall ReadMessage(wchar_t* buffer, unsigned long* size);

// Sends the answer, waits until the client has read it, and lets the client go, whether or not it
// could be sent. Result: 0, -1, -3, -5, -7.
TESSELSLB_API int __stdcall WriteMessage(const wchar_t* message);

// Closes the channel. A ReadMessage that waits returns -3; one that is busy with a client ends
// first in its own time. Result: 0; -1 when there is none; -3 when its pipe was never created.
TESSELSLB_API int __stdcall UninitComm(void);

// Additional windows: up to ten, indexed 0 to 9, hidden and without a parent. A message posted to
// one is dispatched by the message loop of the thread that created the window (the module has no
// loop of its own), which there calls the window's callback. So any thread gets work onto that one.
//
// The thread that creates a window also registers its callback and destroys it; any thread posts.
// Failures give null or FALSE, and a line in the log but for a post that the system refuses; no
// function throws but for exhausted memory.

// What handles a window's messages, those of its destruction included. The lower 32 bits of the
// result count: not 0 says that the message is handled, 0 leaves it to the system's default.
typedef LONG_PTR(__stdcall* SLWindowCallback)(HWND window, UINT message, WPARAM wparam,
                                              LPARAM lparam);

// Creates the window of an index, without a callback. Null when the index is out of bounds or has a
// window, one that the system has destroyed included, or when the system refuses. The first call in
// a process registers the window class; when that fails no later call tries again.
TESSELSLB_API HWND __stdcall AdditionalWindow_Create(unsigned long index);

// Destroys the window and frees the index. TRUE whenever the index had a window; the system itself
// destroys it only on the thread that created it.
TESSELSLB_API BOOL __stdcall AdditionalWindow_Destroy(unsigned long index);

// Posts a message, unchanged; the numbers from WM_APP on are free for hosts. FALSE also when the
// system refuses the post (its last error tells why).
TESSELSLB_API BOOL __stdcall AdditionalWindow_PostMessage(unsigned long index, UINT message,
                                                          WPARAM wparam, LPARAM lparam);

// Sets the callback of a window; null removes it.
TESSELSLB_API BOOL __stdcall AdditionalWindow_RegisterCallback(unsigned long index,
                                                               SLWindowCallback callback);

#ifdef __cplusplus
}
#endif
