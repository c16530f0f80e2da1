// Runs in the client. A flat C interface to the elements of Silverlight content, for C11, C++ and
// every language that can call C functions. It needs no <windows.h>, and works only on 64-bit
// Windows. A program links or loads TesselSLB_c.dll, which needs TesselSLB_x64.dll in the same
// folder. A program that loads TesselSLB_c.dll by a full path must load TesselSLB_x64.dll first,
// because Windows does not search the folder of TesselSLB_c.dll for it.
//
//     tessel_content content = 0;
//     tessel_element user = 0;
//     tessel_error *error = NULL;
//     const tessel_search search = {L"", L"", L"user", 0, 0};
//     if (tessel_content_open_title(L"Order form", L"http://shop.example/orders.html", SL_NO_URI,
//                                   &content, &error) == 0 &&
//         tessel_content_find_first(content, &search, &user, &error) == 0 && user != 0) {
//       tessel_element_set_value(user, L"Ada", &error);
//     }
//     _setmode(2 /*stderr*/, _O_U8TEXT);  // prints all letters; needs <io.h>, <fcntl.h>
//     if (error != NULL) fwprintf(stderr, L"%ls; %ls\n", error->meaning, error->cure);
//     tessel_error_free(error);
//     if (user != 0) tessel_element_release(user, NULL);
//     if (content != 0) tessel_content_close(content, NULL);
//
// How it works: Silverlight content runs inside a window. A program that is called the broker
// answers requests about the content. SceneBroker, which comes with this project, is such a
// program. Each function for a content or an element sends a request to the broker through a pipe
// and waits for the answer, unless its comment says that it sends nothing. If no broker runs yet,
// the function starts a broker, or injects one into the process of the window.
//
// Durations: a request takes at most 54 s with a broker that runs (18 s each to connect, to write
// and to read), 70 s if it starts a broker, and 320 s if it searches for a broker and injects one.
// A function that also releases elements sends one more request for each of them. A hostile broker
// can make a request take longer than that, because it can send an answer in many parts, and each
// part may take 18 s.
//
// Results: every int32_t function returns 0 or the code of a failure. "Not found" is not a failure:
// the function returns 0, and the handle is 0, the text is null, or the list has no elements (free
// this list, too). After a failure all results are 0 or null. A null pointer to a result or a text
// is refused with -5, except for the texts of a tessel_search.
//
// Errors: the last parameter, `error`, may be null. If it is not null, the function sets `*error`
// to null, or after a failure to a tessel_error that the caller frees. The function overwrites
// `*error` and does not free an error that it held. The error explains the code.
//
// Codes: a code is an SL_... code of TesselCodes.h, for example SL_INVALID_ARGUMENT (-5), or a
// TESSEL_... code of this header. A positive code is the broker's own status.
//
// Handles: a handle is a number of 64 bits, never a pointer. 0 is never a valid handle. A function
// refuses a handle that is 0, that was freed, or that names an object of another kind. It then
// fails with -102 and sends nothing. A content may be closed before its elements are released. The
// elements stay usable.
//
// Elements: the broker keeps an object for each element that it has sent to the client, until the
// client releases the element. So release each element.
//
// A lost broker: SL_CANNOT_READ (-6), SL_CANNOT_CONNECT (-7) and SL_BROKER_NOT_STARTED (-9) mean
// that the broker has ended or hangs, that its pipe stays busy, or that no broker could be started.
// Which of the three codes a function returns depends on timing. After one of them the content
// counts as lost. While the content is lost, releasing an element or freeing a list sends nothing
// and returns 0, because each further request could take a minute. So a broker that only hangs
// keeps the objects of these elements. All other functions still send their requests. When the
// broker answers one of them, the content is no longer lost. A broker that was started again does
// not know the old elements: find them again. If the window was closed, the content never works
// again: open a new one.
//
// Threads: any thread may use any handle. Requests for one content and its elements run one after
// another. Requests for different contents do not wait for each other. A thread may free a handle
// while another thread uses it. A call that has already sent its request goes on. A call that is
// queued behind another request fails with -102 if its element was freed. If the element of a
// running tessel_wait_until_attribute is released or abandoned, the wait fails with -13. Closing a
// content does not affect calls that are queued.
//
// Finalizers: releasing an element can take as long as any request. So a finalizer should release
// the element on another thread, or use tessel_element_abandon.
//
// The end: unloading the DLL or ending the process sends nothing. The broker keeps the objects of
// elements that were not released.
//
// Texts are UTF-16 and end with a zero unit. So they cannot hold U+0000. If a text holds half of a
// surrogate pair, the broker receives U+FFFD instead. Free a text that a function has returned with
// tessel_text_free. Do not free the texts of a tessel_error: tessel_error_free frees them.
#ifndef TESSELSLB_H
#define TESSELSLB_H

#include <stddef.h>
#include <stdint.h>
#include <wchar.h>

#include "TesselCodes.h"

#ifdef TESSEL_C_BUILD
#define TESSEL_C_API
#else
#define TESSEL_C_API __declspec(dllimport)
#endif

#ifdef __cplusplus
extern "C" {
#endif

typedef uint64_t tessel_content;
typedef uint64_t tessel_element;
typedef uint64_t tessel_list;

// The codes that only this interface has.
enum { TESSEL_OUT_OF_MEMORY = -101, TESSEL_BAD_HANDLE = -102, TESSEL_TIMED_OUT = -103 };

typedef struct tessel_error {
  int32_t code;
  const wchar_t* name;      // the name of the code, for example "SL_CANNOT_READ"
  const wchar_t* meaning;   // what went wrong
  const wchar_t* cure;      // what to do
  const wchar_t* function;  // an internal name of the function that failed, for a log
  const wchar_t* element;   // the id of the element; empty if it is not known
  const wchar_t* address;   // the address of the content; empty if it is not known
} tessel_error;

// A rectangle in the coordinates of the broker. All points use these coordinates too.
typedef struct tessel_rectangle {
  int32_t left, top, right, bottom;
} tessel_rectangle;

// Three texts and two options that select elements. A null text counts as an empty text. The broker
// defines the meaning of texts and options. SceneBroker defines them so:
// - The texts are the name, the type and the id of an element. An empty text matches everything.
// - `option1` is the number of levels to search. 1 means only the roots of a content, or only the
//   children of an element. 0 means all levels.
// - If `option2` is not 0, the name, type or id of an element only needs to contain the text. If
//   `option2` is 0, it must be equal to the text.
typedef struct tessel_search {
  const wchar_t *text1, *text2, *text3;
  int32_t option1, option2;
} tessel_search;

// Three texts and a number that identify an element. The broker defines their meaning. The caller
// frees each text with tessel_text_free.
typedef struct tessel_identity {
  wchar_t *text1, *text2, *text3;
  int32_t number;
} tessel_identity;

// Tells where an element is: its window, the id of the window's process, and the scheme of its
// broker. If tessel_content_find, tessel_content_find_first, tessel_element_find or
// tessel_wait_until_there found the element, `found` is the rectangle that the element had then.
// Otherwise `found` is empty.
typedef struct tessel_place {
  void* window;  // an HWND
  uint32_t process;
  int32_t scheme;  // an SLUriScheme
  tessel_rectangle found;
} tessel_place;

// These two functions send nothing and cannot fail. They ignore a null pointer.
TESSEL_C_API void tessel_error_free(tessel_error* error);
TESSEL_C_API void tessel_text_free(wchar_t* text);

// Returns the four numbers of the version of TesselSLB_c.dll. Sends nothing.
TESSEL_C_API int32_t tessel_version(int32_t numbers[4], tessel_error** error);

// Functions for a content.

// These two functions open the content of a window. They send nothing.
//
// `window` is an HWND. The function fails with -5 if this window does not exist.
//
// `title` is the title of the window. The function fails with -5 if no window or more than one
// window has this title. Only top-level windows with exactly this title count. The function
// searches for the title only once, so the title may change later.
//
// `address` is the address of the content. The function fails with -5 if it is empty, and checks
// nothing else about it. Only the beginning of the address is used to find the broker: http: or
// https:, the host and the port. Of a file address, everything before the sixth slash is used. For
// file:///C:/a/b/c.html this is file:///C:/a/b. Write this beginning exactly as SceneBroker prints
// it when it starts.
//
// `scheme` names the kind of broker: SL_TAILORED_URI (a broker for one site alone), SL_HTTP_URI,
// SL_HTTPS_URI or SL_FILE_URI. With SL_NO_URI the functions of the content search for the broker.
// The search tries the tailored broker first, and then the broker for the scheme of the address. If
// neither broker shows the content, the search injects a broker into the process of the window.
TESSEL_C_API int32_t tessel_content_open(void* window, const wchar_t* address, int32_t scheme,
                                         tessel_content* content, tessel_error** error);
TESSEL_C_API int32_t tessel_content_open_title(const wchar_t* title, const wchar_t* address,
                                               int32_t scheme, tessel_content* content,
                                               tessel_error** error);

// Frees the handle of the content. Sends nothing.
TESSEL_C_API int32_t tessel_content_close(tessel_content content, tessel_error** error);

// Returns the HWND of the content's window. Sends nothing.
TESSEL_C_API int32_t tessel_content_window(tessel_content content, void** window,
                                           tessel_error** error);

// Returns the element at a point. The broker defines the meaning of `option`. SceneBroker ignores
// `option`.
TESSEL_C_API int32_t tessel_content_at(tessel_content content, int32_t x, int32_t y, int32_t option,
                                       tessel_element* element, tessel_error** error);

// Returns the element that has the focus. This function always searches for the broker, so it works
// only for a content that was opened with SL_NO_URI or SL_TAILORED_URI. For SL_HTTP_URI,
// SL_HTTPS_URI and SL_FILE_URI it sends nothing and fails with -5, because the search could find
// another broker.
TESSEL_C_API int32_t tessel_content_focused(tessel_content content, tessel_element* element,
                                            tessel_error** error);

// tessel_content_find returns a list of all matching elements. tessel_content_find_first returns
// the first of them. tessel_content_find_first also requests all matching elements, and then
// releases all except the first one, by one request each. So it is fast only if few elements match.
TESSEL_C_API int32_t tessel_content_find(tessel_content content, const tessel_search* search,
                                         tessel_list* list, tessel_error** error);
TESSEL_C_API int32_t tessel_content_find_first(tessel_content content, const tessel_search* search,
                                               tessel_element* element, tessel_error** error);

// Functions for an element.

// These two functions send nothing. But they wait until no other thread uses the content.
TESSEL_C_API int32_t tessel_element_id(tessel_element element, wchar_t** id, tessel_error** error);
TESSEL_C_API int32_t tessel_element_place(tessel_element element, tessel_place* place,
                                          tessel_error** error);

// Returns the parent. The handle is 0 if the element has no parent.
TESSEL_C_API int32_t tessel_element_parent(tessel_element element, tessel_element* parent,
                                           tessel_error** error);

// Returns a list of the ancestors. The broker defines their order. SceneBroker lists them from the
// parent up to the root. The broker also sends a number for each ancestor, and defines its meaning.
// tessel_list_number returns this number.
TESSEL_C_API int32_t tessel_element_ancestors(tessel_element element, tessel_list* list,
                                              tessel_error** error);

// Returns a list of elements that the broker chooses for this element. The list is called the
// default selector. The broker defines its meaning and its order. SceneBroker lists the elements
// from the root down to this element.
TESSEL_C_API int32_t tessel_element_selector(tessel_element element, tessel_list* list,
                                             tessel_error** error);

// Returns a list of all matching elements below this element.
TESSEL_C_API int32_t tessel_element_find(tessel_element element, const tessel_search* search,
                                         tessel_list* list, tessel_error** error);

// Returns what identifies the element. If `ancestor` is not 0, the broker identifies the element
// relative to that ancestor. If the process or the scheme (see tessel_place) of the two elements
// differ, the function fails with -13.
TESSEL_C_API int32_t tessel_element_identify(tessel_element element, tessel_element ancestor,
                                             tessel_identity* identity, tessel_error** error);

// Returns the rectangle that the element has now.
TESSEL_C_API int32_t tessel_element_rectangle(tessel_element element, tessel_rectangle* rectangle,
                                              tessel_error** error);

// Returns an attribute or a state as text. SceneBroker has the states "value", "checked" ("true" or
// "false") and "selected". The text is null if the broker answers with any positive status. Usually
// the element then has no such attribute, or the element no longer exists. An empty name is refused
// with -5.
TESSEL_C_API int32_t tessel_element_attribute(tessel_element element, const wchar_t* name,
                                              wchar_t** text, tessel_error** error);

// If the element is a list, returns the texts of its items: a tessel_list of texts, which
// tessel_list_text reads. The handle is 0 if the broker answers with any positive status. Usually
// the element then is not a list, or it no longer exists.
TESSEL_C_API int32_t tessel_element_items(tessel_element element, tessel_list* list,
                                          tessel_error** error);

// The next five functions act on the element. When they return 0, the broker has accepted the
// command, but the content may change later. To wait for the change, use
// tessel_wait_until_attribute.
TESSEL_C_API int32_t tessel_element_click(tessel_element element, tessel_error** error);
TESSEL_C_API int32_t tessel_element_set_value(tessel_element element, const wchar_t* text,
                                              tessel_error** error);
TESSEL_C_API int32_t tessel_element_set_focus(tessel_element element, tessel_error** error);
// Checks the element, or unchecks it if `on` is 0.
TESSEL_C_API int32_t tessel_element_check(tessel_element element, int32_t on, tessel_error** error);
// Selects the item with this text.
TESSEL_C_API int32_t tessel_element_select(tessel_element element, const wchar_t* item,
                                           tessel_error** error);

// These two functions free the handle, even if the request fails. tessel_element_release tells the
// broker by one request to free the object of the element. While the content is lost, it sends
// nothing. tessel_element_abandon never sends a request, and the broker keeps the object until the
// broker ends.
TESSEL_C_API int32_t tessel_element_release(tessel_element element, tessel_error** error);
TESSEL_C_API int32_t tessel_element_abandon(tessel_element element, tessel_error** error);

// Functions for a list. A list holds elements or texts. Only tessel_list_free sends requests. The
// first index is 0. An index beyond the end is refused with -5.

TESSEL_C_API int32_t tessel_list_size(tessel_list list, size_t* size, tessel_error** error);

// Takes the element at this index out of the list, and returns a handle that the caller releases.
// The size of the list and the other indexes do not change. The handle is 0 if the element was
// taken before, or if the list holds texts.
TESSEL_C_API int32_t tessel_list_take(tessel_list list, size_t index, tessel_element* element,
                                      tessel_error** error);

// Returns the number of the ancestor at this index, or 0 if the list does not hold ancestors.
TESSEL_C_API int32_t tessel_list_number(tessel_list list, size_t index, int32_t* number,
                                        tessel_error** error);

// Returns the text at this index. In a list of elements this is the id of the element, even after
// the element was taken.
TESSEL_C_API int32_t tessel_list_text(tessel_list list, size_t index, wchar_t** text,
                                      tessel_error** error);

// Frees the handle of the list. Releases the elements that were not taken, by one request each.
// Returns 0 even if a release fails.
TESSEL_C_API int32_t tessel_list_free(tessel_list list, tessel_error** error);

// Functions that wait. They check a condition at once, and again after each interval, until it is
// met. `timeout` and `interval` are in milliseconds, so the longest time is 49 days. If `timeout`
// is 0, the functions check once. Between two checks other threads can use the content.
//
// With these functions, only the first check can start or inject a broker. Later checks use the
// broker that the first check found. If that broker has ended, a later check sends nothing and
// fails with -7. If a check fails, the wait ends and returns the code of the check.
//
// With a check of your own (tessel_look), a later check can also start or inject a broker in three
// cases: the check calls tessel_content_focused, the check uses another content, or no earlier call
// with this content has found a broker.
//
// After the time-out the functions return TESSEL_TIMED_OUT (-103). The error says what was waited
// for, how long, and what was seen last. The time-out does not interrupt a check. So if the broker
// hangs, the wait can take longer than `timeout`.

// Waits until at least one element matches, and returns the first matching element.
TESSEL_C_API int32_t tessel_wait_until_there(tessel_content content, const tessel_search* search,
                                             uint32_t timeout, uint32_t interval,
                                             tessel_element* element, tessel_error** error);
// Waits until no element matches.
TESSEL_C_API int32_t tessel_wait_until_gone(tessel_content content, const tessel_search* search,
                                            uint32_t timeout, uint32_t interval,
                                            tessel_error** error);
// Waits until the attribute is exactly `text`.
TESSEL_C_API int32_t tessel_wait_until_attribute(tessel_element element, const wchar_t* name,
                                                 const wchar_t* text, uint32_t timeout,
                                                 uint32_t interval, tessel_error** error);

// The type of a check of your own. The check runs on the thread that waits, and may use this
// interface. `context` is the pointer that was passed to tessel_wait_until.
//
// `*met` is 0 at the start of each call. The check sets it to 1 if the condition is met. Otherwise
// the check may set `*seen` to a text that describes what it found instead. This text must stay
// valid until the check is called again or the wait ends.
//
// The check returns 0, or a code that ends the wait. The wait then returns this code. The
// tessel_error of the wait describes only this code, not the function that the check has called. No
// exception may leave the check.
typedef int32_t (*tessel_look)(void* context, int32_t* met, const wchar_t** seen);

// Waits until a check of your own sets `*met` to 1. `what` completes the sentence "waited until
// ...", which is part of the error after a time-out.
TESSEL_C_API int32_t tessel_wait_until(tessel_content content, const wchar_t* what,
                                       tessel_look look, void* context, uint32_t timeout,
                                       uint32_t interval, tessel_error** error);

#ifdef __cplusplus
}
#endif

#endif
