// Runs in the broker's process. Functions for the program that hosts the broker: the server's end
// of the pipe, and hidden windows. Any thread can post a message to such a window, and the thread
// that created the window handles the message. For C11 and C++17. "The module" is
// TesselSLB_x64.dll.
//
// Calls: first call InitComm. It opens the channel, which is the server's end of the pipe. For each
// request call ReadMessage, and then WriteMessage exactly once. If ReadMessage fails, do not call
// WriteMessage. Finally call UninitComm, which closes the channel. This example of a host answers
// every request with the status 102:
//
//     wchar_t request[65536];
//     unsigned long size = 65536;
//     int code = InitComm(SL_TAILORED_URI, 0xFFFFFFFF, L"http://shop.example/orders.html");
//     while (code == 0 || code == -6 || code == -7 || code == -15) {
//       code = ReadMessage(request, &size);
//       if (code == 0) code = WriteMessage(L"[102]");
//     }
//     UninitComm();
//
// Threads: only one thread at a time may call InitComm, ReadMessage and WriteMessage. (InitComm
// says what happens if another thread is still in ReadMessage.) Any thread may call UninitComm at
// any moment, even while another thread is in ReadMessage or WriteMessage. After a successful
// UninitComm, ReadMessage and WriteMessage return -1 until the next InitComm. Unload the module
// only when all calls have returned.
//
// Failures: these four functions return a code for each failure, and log each failure except -2.
// Two C++ exceptions may leave them: std::bad_alloc when memory is exhausted, and
// std::system_error from InitComm when the pipe's security cannot be set up.
//
// Texts are UTF-16. Requests and answers are JSON arrays, but these functions do not check that. A
// request begins with the number of its command, an answer with a status. docs/protocol.md lists
// all requests and answers.
#pragma once

#include <windows.h>

#include "TesselApi.h"
#include "TesselCodes.h"

enum SLChannelResult TESSELSLB_AS_INT {
  SL_CHANNEL_SUCCESS = 0,
  SL_CHANNEL_NOT_INITIALIZED = -1,
  SL_CHANNEL_BUFFER_TOO_SMALL = -2,
  // InitComm: the scheme is invalid. Other functions: the call is out of order (for example
  // WriteMessage without a request), UninitComm has closed the channel during the call, or the
  // last InitComm returned -4.
  SL_CHANNEL_CLOSED = -3,
  // Another host uses the pipe's name, or the same host has opened a channel with this name
  // before, and a call of ReadMessage or WriteMessage still uses that channel.
  SL_CHANNEL_NOT_CREATED = -4,
  SL_CHANNEL_INVALID_ARGUMENT = -5,
  // The client left, the client sent nothing for 3 s, or the wait for a client failed. After -6, -7
  // or -15 the host calls ReadMessage again.
  SL_CHANNEL_CANNOT_READ = -6,
  // The client left, the answer could not be written into the pipe within 3 s, or the answer is
  // empty.
  SL_CHANNEL_CANNOT_WRITE = -7,
  SL_CHANNEL_NO_CLIENT = -15,  // no client connected in time
};

#ifdef __cplusplus
extern "C" {
#endif

// Creates the broker's pipe. The pipe's name is made from the scheme, and for the tailored scheme
// also from the address.
//
// scheme          an SLUriScheme value of TesselCodes.h, except SL_NO_URI.
// connectTimeout  how long each ReadMessage waits for a client, in milliseconds. 0xFFFFFFFF means
//                 no limit.
// source          the address of the content. Null means an empty address. A pointer below 0x10000
//                 is not the address of a text, but the id of a string in the module's resources.
//                 The module has no such strings so far, so it means an empty address, too.
//
// Call UninitComm before you call InitComm again, because only UninitComm wakes a thread that
// waits for a client in ReadMessage. If you do not call UninitComm first, the thread keeps
// waiting:
// - With the same pipe name, InitComm returns -4 as long as the thread is in ReadMessage.
// - With a different pipe name, InitComm succeeds. But UninitComm then closes only the new
//   channel, so it does not wake the thread.
//
// If the result is -3, an earlier channel stays open. If the result is 0 or -4, an earlier channel
// is closed as soon as no call uses it. After -4 no channel can be used: ReadMessage, WriteMessage
// and UninitComm return -3 until the next InitComm.
// Result: 0, -3, -4.
TESSELSLB_API int __stdcall InitComm(unsigned long scheme, unsigned long connectTimeout,
                                     const wchar_t* source);

// Waits for a client and copies its request into the buffer, with a zero at the end.
//
// buffer  receives the request. May be null if `*size` is 0, which asks for the size.
// size    in: the buffer's size in UTF-16 units, with the zero.
//         out: after -2, the size that the request needs, with the zero. All other results,
//         success included, leave `*size` unchanged.
//
// After -2 the next call returns the same request at once, unless the request is empty. If the
// request is empty and `*size` is 0, the request is lost: the call returns -2, and each further
// ReadMessage returns -3 until WriteMessage disconnects the client. To avoid this, pass a buffer of
// at least one unit.
//
// ReadMessage waits up to `connectTimeout` for a client, and then up to 3 s for the request. A
// request may arrive in parts, and the 3 s apply to each part.
// Result: 0, -1, -2, -3, -5, -6, -15.
TESSELSLB_API int __stdcall ReadMessage(wchar_t* buffer, unsigned long* size);

// Sends the answer, waits until the client has read it, and disconnects the client. Disconnects the
// client even if the answer cannot be sent. Writing the answer into the pipe takes 3 s at most.
// Then the call waits, without limit, until the client has read the whole answer or disconnects. No
// other function ends this wait.
// Result: 0, -1, -3, -5, -7.
TESSELSLB_API int __stdcall WriteMessage(const wchar_t* message);

// Closes the channel. A call of ReadMessage that waits for a client returns -3. A call that is
// already reading a request or writing an answer is not interrupted, and UninitComm does not wait
// for it.
// Result: 0; -1 if there is no channel; -3 after an InitComm that returned -4.
TESSELSLB_API int __stdcall UninitComm(void);

// Additional windows. A host can create up to ten hidden windows, with the indexes 0 to 9. Any
// thread may post a message to a window. The thread that created the window receives the message
// and runs the window's callback. This thread must run a message loop, because the module has none.
// The same thread registers the callback and destroys the window.
//
// Destroy all windows before you unload the module. Do not load the module again after that: its
// window class stays registered, so no window could be created.
//
// On failure these functions return null or FALSE. They log every failure, except a message that
// the system refused to post. The only C++ exception that may leave them is std::bad_alloc.

// Handles each message of a window, even the messages of its destruction. Only the lower 32 bits of
// the result count. 0 means that the system handles the message. Any other result means that the
// callback has handled it.
typedef LONG_PTR(__stdcall* SLWindowCallback)(HWND window, UINT message, WPARAM wparam,
                                              LPARAM lparam);

// Creates a window without a callback. Returns null if the index is too large, if the index
// already has a window (even a window that the system has destroyed), or if the system cannot
// create the window. The first call in a process registers the window class. If that fails, all
// later calls fail.
TESSELSLB_API HWND __stdcall AdditionalWindow_Create(unsigned long index);

// Destroys the window and frees the index. Returns FALSE if the index has no window. If another
// thread created the window, the window stays, but the index becomes free and the result is TRUE.
TESSELSLB_API BOOL __stdcall AdditionalWindow_Destroy(unsigned long index);

// Posts a message to the window. Message numbers from WM_APP on are free for hosts. Returns FALSE
// if the index has no window, or if the system refuses to post the message (see GetLastError).
TESSELSLB_API BOOL __stdcall AdditionalWindow_PostMessage(unsigned long index, UINT message,
                                                          WPARAM wparam, LPARAM lparam);

// Sets the callback of a window. Null removes the callback. Returns FALSE if the index has no
// window.
TESSELSLB_API BOOL __stdcall AdditionalWindow_RegisterCallback(unsigned long index,
                                                               SLWindowCallback callback);

#ifdef __cplusplus
}
#endif
