// Broker's process. What the module offers to the program that hosts the broker: the server's end
// of the bridge's pipe, and windows that bring work to the thread that created them. C11 and C++17.
//
// The order of the calls: InitComm. Then for each request ReadMessage (twice if the buffer is too
// small) and exactly one WriteMessage. At the end UninitComm.
//
// Threads: one thread at a time may call InitComm, ReadMessage and WriteMessage. Any thread may
// call UninitComm at any moment, also while another one is in ReadMessage or WriteMessage. After
// UninitComm call nothing but InitComm. A ReadMessage that UninitComm wakes must have returned
// before the module is unloaded.
//
// Failures: each has a code, and each code except -2 has a line in the log. Two C++ exceptions may
// leave the functions: std::bad_alloc when memory is exhausted, and std::system_error from InitComm
// when the pipe's security cannot be built.
//
// Texts are UTF-16. Requests and answers are JSON arrays, but the channel does not look into them.
#pragma once

#include <windows.h>

#include "TesselApi.h"
#include "TesselCodes.h"

enum SLChannelResult TESSELSLB_AS_INT {
  SL_CHANNEL_SUCCESS = 0,
  SL_CHANNEL_NOT_INITIALIZED = -1,
  SL_CHANNEL_BUFFER_TOO_SMALL = -2,
  SL_CHANNEL_CLOSED = -3,       // no pipe name, a call out of order, or closed by UninitComm
  SL_CHANNEL_NOT_CREATED = -4,  // another host has the name, or an old call still uses it
  SL_CHANNEL_INVALID_ARGUMENT = -5,
  // After the next three the host goes on with ReadMessage.
  SL_CHANNEL_CANNOT_READ = -6,   // the client left or sent nothing for 3 s, or the wait failed
  SL_CHANNEL_CANNOT_WRITE = -7,  // the client left or did not read for 3 s, or the text is empty
  SL_CHANNEL_NO_CLIENT = -15,    // no client came in time
};

#ifdef __cplusplus
extern "C" {
#endif

// Creates the pipe on which clients look for the broker of a scheme and, for the tailored scheme,
// of a content address.
//
// scheme          an SLUriScheme value of TesselCodes.h.
// connectTimeout  how long each ReadMessage waits for a client, in milliseconds. 0xFFFFFFFF is
//                 without limit.
// source          the address. Null stands for an empty one. A value below 0x10000 is the id of a
//                 string in the resources of TesselSLB_x64.dll. The module holds no strings so
//                 far, so such an id stands for an empty address too.
//
// A channel that is open is closed first, except after -3, which leaves it open. But call
// UninitComm before: InitComm does not wake a thread that is still in ReadMessage or WriteMessage.
// The name of that thread's channel stays taken (-4) until it leaves, and UninitComm then reaches
// only the new channel.
//
// After -4 there is a channel that cannot be used: ReadMessage, WriteMessage and UninitComm return
// -3. The next InitComm replaces it.
// Result: 0, -3, -4.
TESSELSLB_API int __stdcall InitComm(unsigned long scheme, unsigned long connectTimeout,
                                     const wchar_t* source);

// Waits for a client and copies its request into the buffer, with a zero at the end.
//
// size  in: the buffer's size in UTF-16 units, with the zero. out, only after -2: the size that the
//       request needs. The next call then returns the same request at once. All other results,
//       success included, leave it unchanged.
//
// Takes up to `connectTimeout`, and then 3 s for a client that sends nothing. The limit of
// 3 s applies to each single wait for a part of the message. So a client that cancels and repeats
// its writes can make a call longer.
// Result: 0, -1, -2, -3, -5, -6, -15.
TESSELSLB_API int __stdcall ReadMessage(wchar_t* buffer, unsigned long* size);

// Sends the answer, waits until the client has read it, and disconnects the client, also when the
// answer could not be sent. Sending takes 3 s at most. The wait for a client that reads only a part
// has no limit.
// Result: 0, -1, -3, -5, -7.
TESSELSLB_API int __stdcall WriteMessage(const wchar_t* message);

// Closes the channel. A ReadMessage that waits for a client returns -3. A call that is busy with a
// client goes on until it ends by itself.
// Result: 0; -1 when there is no channel; -3 after an InitComm that returned -4.
TESSELSLB_API int __stdcall UninitComm(void);

// Additional windows: up to ten, with the indexes 0 to 9, hidden and without a parent. Any thread
// may post a message to one of them. The thread that created the window receives it in its own
// message loop, as the module has none, and runs the window's callback.
//
// The thread that creates a window also registers its callback and destroys it. All windows must be
// destroyed before the module is unloaded, and a host does not load the module again: the window
// class stays registered, so no window could be created. A failure returns null or FALSE and has a
// line in the log, except for a post that the system refuses. Only std::bad_alloc may leave the
// functions.

// Handles a window's messages, those of its destruction included. Only the lower 32 bits of the
// result count. Not 0: the message is handled. 0: the system handles it.
typedef LONG_PTR(__stdcall* SLWindowCallback)(HWND window, UINT message, WPARAM wparam,
                                              LPARAM lparam);

// Creates the window of an index, without a callback. Returns null when the index is out of bounds,
// when it has a window (also one that the system has destroyed), or when the system refuses. The
// first call in a process registers the window class. If that fails, all later calls fail.
TESSELSLB_API HWND __stdcall AdditionalWindow_Create(unsigned long index);

// Destroys the window and frees the index. Returns TRUE whenever the index had a window, but the
// system destroys it only on the thread that created it.
TESSELSLB_API BOOL __stdcall AdditionalWindow_Destroy(unsigned long index);

// Posts a message, unchanged. The numbers from WM_APP on are free for hosts. Returns FALSE also
// when the system refuses the post (see GetLastError).
TESSELSLB_API BOOL __stdcall AdditionalWindow_PostMessage(unsigned long index, UINT message,
                                                          WPARAM wparam, LPARAM lparam);

// Sets the callback of a window; null removes it.
TESSELSLB_API BOOL __stdcall AdditionalWindow_RegisterCallback(unsigned long index,
                                                               SLWindowCallback callback);

#ifdef __cplusplus
}
#endif
