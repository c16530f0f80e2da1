// Runs in the client. A flat C interface to the elements of Silverlight content, for C11, C++ and
// every language that can call C functions. It needs no <windows.h>. A program links or loads
// TesselSLB_c.dll, which needs TesselSLB_x64.dll in the same folder. 64-bit Windows only. A program
// that loads TesselSLB_c.dll by a full path must load TesselSLB_x64.dll first, because Windows does
// not search that folder for it.
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
//     if (error != NULL) fwprintf(stderr, L"%ls; %ls\n", error->meaning, error->cure);
//     tessel_error_free(error);
//     if (user != 0) tessel_element_release(user, NULL);
//     if (content != 0) tessel_content_close(content, NULL);
//
// How it works: content runs inside a window, and a program that is called the broker answers for
// it. Each function of a content or an element sends a request to the broker through a pipe and
// waits for the answer, unless its comment says that it sends nothing. If no broker runs yet, the
// function starts or injects one, which can take minutes. A function takes at most 54 s with a
// broker that runs (18 s each to connect, to write and to read), 70 s if it starts a broker, and
// 320 s if it searches and injects a broker. A hostile broker can make all of these longer.
//
// Results: every function returns 0 or a code. "Not found" is not a failure: the function returns
// 0, and the handle is 0, the text is null, or the list is empty. After a failure all results are 0
// or null. Pointers to results and texts must not be null (-5), except for the texts of a
// tessel_search. The last parameter may be null. Otherwise it receives null, or after a failure a
// tessel_error that the caller frees. An error that was there before is not freed.
//
// Codes: those of TesselCodes.h (SL_...), for example SL_INVALID_ARGUMENT (-5), those below, and
// the positive codes, which are the broker's own status. The error explains each code.
//
// Handles: a handle is a number of 64 bits, never a pointer. 0 is never a valid handle. A handle
// that is 0, that was freed, or that names an object of another kind is refused with -102, and
// nothing happens. The broker keeps an object for each element that it hands out, so release each
// element. A content may be closed before its elements; they stay usable.
//
// A lost broker: after SL_CANNOT_READ (-6), SL_CANNOT_CONNECT (-7) and SL_BROKER_NOT_STARTED (-9)
// the content counts as lost, because each further request to a broker that has ended or hangs can
// take a minute. Which of the three codes is returned depends on timing. While the content is lost,
// releasing elements and freeing lists sends nothing and returns 0. If the broker only hangs, it
// keeps these objects. Other functions still send their requests, and the next answer of the broker
// ends this state. A broker that was started again does not know the old elements: find them again.
// If the window has gone, the content never works again: open a new one.
//
// Threads: any thread may use any handle. Requests for one content and its elements run one after
// another. Different contents do not wait for each other. If another thread frees a handle during a
// request, the request goes on. A call that still waits for its turn then fails with -102. A
// tessel_wait function that is already running fails with -13. Releasing an element can take as
// long as any request. A finalizer should therefore release on a thread of its own, or use
// tessel_element_abandon.
//
// The end: unloading the DLL or ending the process sends nothing. The broker keeps the objects of
// elements that were not released.
//
// Texts are UTF-16 and end with a zero. So they cannot hold U+0000. The broker receives U+FFFD for
// half of a surrogate pair. tessel_text_free frees a text that a function has returned. The texts
// of a tessel_error belong to it.
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

// The codes of this interface itself.
enum { TESSEL_OUT_OF_MEMORY = -101, TESSEL_BAD_HANDLE = -102, TESSEL_TIMED_OUT = -103 };

typedef struct tessel_error {
  int32_t code;
  const wchar_t* name;      // of the code, for example "SL_CANNOT_READ"
  const wchar_t* meaning;   // what went wrong
  const wchar_t* cure;      // what to do
  const wchar_t* function;  // an internal name of the function that failed, for a log
  const wchar_t* element;   // the id of the element; empty if it is not known
  const wchar_t* address;   // of the content; empty if it is not known
} tessel_error;

// In the coordinates of the broker, like all points.
typedef struct tessel_rectangle {
  int32_t left, top, right, bottom;
} tessel_rectangle;

// Three texts and two options that select elements. The broker defines their meaning. For
// SceneBroker:
// - The texts are name, type and id. An empty text matches everything. A null text counts as empty.
// - option1 is the number of levels to search. 1 means only the roots of a content, or only the
//   children of an element. 0 means all levels.
// - If option2 is not 0, a text matches if it is a part of the text of the element.
typedef struct tessel_search {
  const wchar_t *text1, *text2, *text3;
  int32_t option1, option2;
} tessel_search;

// Three texts and a number that identify an element. The broker defines their meaning. The caller
// frees each text.
typedef struct tessel_identity {
  wchar_t *text1, *text2, *text3;
  int32_t number;
} tessel_identity;

// Where an element is. `found` is its rectangle at the time when a search by texts found it. It is
// empty for all other elements.
typedef struct tessel_place {
  void* window;  // an HWND
  uint32_t process;
  int32_t scheme;
  tessel_rectangle found;
} tessel_place;

// These two functions send nothing and cannot fail. They accept null.
TESSEL_C_API void tessel_error_free(tessel_error* error);
TESSEL_C_API void tessel_text_free(wchar_t* text);

// Returns the four numbers of the version of TesselSLB_c.dll.
TESSEL_C_API int32_t tessel_version(int32_t numbers[4], tessel_error** error);

// Functions for a content.

// Open the content of a window at an address. They send nothing. They fail with -5 if there is no
// such window, or if not exactly one top-level window has exactly this title. The title is looked
// up only now. `window` is an HWND.
//
// Only the scheme, the host and the port of the address select the broker. Spell them exactly as
// the broker prints them. The address is not checked here.
//
// `scheme` is an SLUriScheme of TesselCodes.h. With SL_NO_URI the functions of the content search
// for the broker. The search tries the tailored broker first (a broker for one site alone), and
// then the broker for the scheme of the address. If neither shows the content, a broker is injected
// into the process of the window.
TESSEL_C_API int32_t tessel_content_open(void* window, const wchar_t* address, int32_t scheme,
                                         tessel_content* content, tessel_error** error);
TESSEL_C_API int32_t tessel_content_open_title(const wchar_t* title, const wchar_t* address,
                                               int32_t scheme, tessel_content* content,
                                               tessel_error** error);

// Frees the handle. Sends nothing.
TESSEL_C_API int32_t tessel_content_close(tessel_content content, tessel_error** error);

// Returns the HWND. Sends nothing.
TESSEL_C_API int32_t tessel_content_window(tessel_content content, void** window,
                                           tessel_error** error);

// Returns the element at a point. The broker defines the meaning of `option`; SceneBroker ignores
// it.
TESSEL_C_API int32_t tessel_content_at(tessel_content content, int32_t x, int32_t y, int32_t option,
                                       tessel_element* element, tessel_error** error);

// Returns the element that has the focus. This function always searches, beginning with the
// tailored broker. So it works only for contents with SL_NO_URI or SL_TAILORED_URI (-5 for others).
TESSEL_C_API int32_t tessel_content_focused(tessel_content content, tessel_element* element,
                                            tessel_error** error);

// Return all matching elements, or the first one of them. tessel_content_find_first asks for all
// matching elements too, and releases the others by one request each. So a narrow search is faster.
TESSEL_C_API int32_t tessel_content_find(tessel_content content, const tessel_search* search,
                                         tessel_list* list, tessel_error** error);
TESSEL_C_API int32_t tessel_content_find_first(tessel_content content, const tessel_search* search,
                                               tessel_element* element, tessel_error** error);

// Functions for an element.

// These two functions send nothing.
TESSEL_C_API int32_t tessel_element_id(tessel_element element, wchar_t** id, tessel_error** error);
TESSEL_C_API int32_t tessel_element_place(tessel_element element, tessel_place* place,
                                          tessel_error** error);

TESSEL_C_API int32_t tessel_element_parent(tessel_element element, tessel_element* parent,
                                           tessel_error** error);

// Returns the ancestors. SceneBroker lists them from the parent up to the root. The broker gives
// each ancestor a number and defines its meaning; tessel_list_number returns it.
TESSEL_C_API int32_t tessel_element_ancestors(tessel_element element, tessel_list* list,
                                              tessel_error** error);

// Returns the elements of the default selector. SceneBroker lists them from the root down to the
// element.
TESSEL_C_API int32_t tessel_element_selector(tessel_element element, tessel_list* list,
                                             tessel_error** error);

// Returns all matching elements below this element.
TESSEL_C_API int32_t tessel_element_find(tessel_element element, const tessel_search* search,
                                         tessel_list* list, tessel_error** error);

// `ancestor` may be 0. Otherwise the broker identifies the element relative to that ancestor.
TESSEL_C_API int32_t tessel_element_identify(tessel_element element, tessel_element ancestor,
                                             tessel_identity* identity, tessel_error** error);

TESSEL_C_API int32_t tessel_element_rectangle(tessel_element element, tessel_rectangle* rectangle,
                                              tessel_error** error);

// Returns an attribute or a state. SceneBroker has the states "value", "checked" ("true" or
// "false") and "selected". The text is null if the broker answers with any positive status: the
// element has no such attribute, or it no longer exists. The name must not be empty (-5).
TESSEL_C_API int32_t tessel_element_attribute(tessel_element element, const wchar_t* name,
                                              wchar_t** text, tessel_error** error);

// Returns the texts of the items of a list (see tessel_list_text). The handle is 0 if the broker
// answers with any positive status: the element is not a list, or it no longer exists.
TESSEL_C_API int32_t tessel_element_items(tessel_element element, tessel_list* list,
                                          tessel_error** error);

// Act on the element. Success means that the broker has accepted the command. The content may
// change later: wait with tessel_wait_until_attribute.
TESSEL_C_API int32_t tessel_element_click(tessel_element element, tessel_error** error);
TESSEL_C_API int32_t tessel_element_set_value(tessel_element element, const wchar_t* text,
                                              tessel_error** error);
TESSEL_C_API int32_t tessel_element_set_focus(tessel_element element, tessel_error** error);
// Checks the element, or unchecks it if `on` is 0.
TESSEL_C_API int32_t tessel_element_check(tessel_element element, int32_t on, tessel_error** error);
TESSEL_C_API int32_t tessel_element_select(tessel_element element, const wchar_t* item,
                                           tessel_error** error);

// Both functions free the handle, even if they fail. tessel_element_release tells the broker that
// its object is free, unless the content is lost. tessel_element_abandon sends nothing, and the
// broker keeps its object.
TESSEL_C_API int32_t tessel_element_release(tessel_element element, tessel_error** error);
TESSEL_C_API int32_t tessel_element_abandon(tessel_element element, tessel_error** error);

// Functions for a list. A list holds elements or texts. Only tessel_list_free sends requests. An
// index beyond the end is refused with -5.

TESSEL_C_API int32_t tessel_list_size(tessel_list list, size_t* size, tessel_error** error);

// Takes the element out of the list. The handle is 0 if the element was taken before, or if the
// list holds texts.
TESSEL_C_API int32_t tessel_list_take(tessel_list list, size_t index, tessel_element* element,
                                      tessel_error** error);

// Returns the number of the ancestor at this index, or 0 if the list does not hold ancestors.
TESSEL_C_API int32_t tessel_list_number(tessel_list list, size_t index, int32_t* number,
                                        tessel_error** error);

// Returns the text at this index. In a list of elements it is the id, even after the element was
// taken.
TESSEL_C_API int32_t tessel_list_text(tessel_list list, size_t index, wchar_t** text,
                                      tessel_error** error);

// Frees the handle, and releases the elements that were not taken, by one request each. Returns 0
// even if a release fails.
TESSEL_C_API int32_t tessel_list_free(tessel_list list, tessel_error** error);

// Waiting. These functions check a condition at once, and again after each interval, until it is
// met. Times are in milliseconds, and the longest one is 49 days. With the time-out 0 they check
// once. Between two checks other threads can use the content.
//
// Only the first check may start or inject a broker. Later checks use the scheme that was found,
// and fail with -7, without a request, if that broker has ended. (A check of your own that calls
// tessel_content_focused can still inject one, because this function always searches.) If a check
// fails, the wait ends with its code. After the time-out the functions return TESSEL_TIMED_OUT, and
// the error says what was waited for, how long, and what was seen last. A check that has begun is
// not interrupted.

// Waits until an element matches, and returns the first one.
TESSEL_C_API int32_t tessel_wait_until_there(tessel_content content, const tessel_search* search,
                                             uint32_t timeout, uint32_t interval,
                                             tessel_element* element, tessel_error** error);
TESSEL_C_API int32_t tessel_wait_until_gone(tessel_content content, const tessel_search* search,
                                            uint32_t timeout, uint32_t interval,
                                            tessel_error** error);
TESSEL_C_API int32_t tessel_wait_until_attribute(tessel_element element, const wchar_t* name,
                                                 const wchar_t* text, uint32_t timeout,
                                                 uint32_t interval, tessel_error** error);

// A check of your own. It runs on the thread that waits, and may use this interface. It sets `met`,
// which is 0, to 1 if the condition is met. Otherwise it may set `seen` to a text that stays valid
// until the next check or the end of the wait. A result other than 0 ends the wait with this code.
// The error of the wait then explains only the code. No exception may leave the check.
typedef int32_t (*tessel_look)(void* context, int32_t* met, const wchar_t** seen);

// Waits for a check of your own. `what` completes the sentence "waited until ...".
TESSEL_C_API int32_t tessel_wait_until(tessel_content content, const wchar_t* what,
                                       tessel_look look, void* context, uint32_t timeout,
                                       uint32_t interval, tessel_error** error);

#ifdef __cplusplus
}
#endif

#endif
