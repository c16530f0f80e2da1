// Runs in the client. A flat C interface to the elements of Silverlight content, for C11, C++ and
// every language that can call C functions. It needs no <windows.h>. A program links or loads
// TesselSLB_c.dll, which needs TesselSLB_x64.dll in the same folder.
//
//     tessel_content content = 0;
//     tessel_element user = 0;
//     tessel_error *error = NULL;
//     const tessel_search search = {L"", L"", L"user", 0, 0};
//     if (tessel_content_open_title(L"Order form", L"http://shop.example/orders.html",
//                                   TESSEL_ANY_SCHEME, &content, &error) == 0 &&
//         tessel_content_find_first(content, &search, &user, &error) == 0 && user != 0) {
//       tessel_element_set_value(user, L"Ada", &error);
//     }
//     if (error != NULL) fwprintf(stderr, L"%ls; %ls\n", error->meaning, error->cure);
//     tessel_error_free(error);
//     tessel_element_release(user, NULL);
//     tessel_content_close(content, NULL);
//
// How it works: content runs inside a window, and a broker answers for it. A function that "calls"
// sends one request through a pipe to the broker and waits for the answer. A broker that does not
// run yet is started or injected, which can take minutes. A call to a running broker ends after at
// most 54 s (18 s each for connecting, writing and reading), a call that starts a broker after 70
// s, a search that injects a broker after 320 s.
//
// Results: every function returns 0 (success) or a result code. "Not there" is success: the handle
// is 0, or the text is null. The last parameter of every function may be null. Otherwise it
// receives a tessel_error after a failure, and null after success. The caller frees it with
// tessel_error_free. Other output parameters are set to 0 or null after a failure. They must not be
// null (-5). A text argument must not be null (-5).
//
// Codes: -3 to -13 are those of the module (TesselCodes.h): -5 invalid argument, -6 the broker sent
// no answer, -7 the broker cannot be reached, -9 no broker could be started, -13 the element was
// released or abandoned before. -101 to -103 are below. A positive code is the broker's own status.
// The error explains each code.
//
// Handles: a handle is a number, never a pointer. 0 is never a valid handle. A handle that is 0,
// freed before, or of another kind is refused with -102, and nothing happens.
// An open handle costs a little memory. An element costs an object in the broker too, so release
// each element. A content may be closed before its elements; they stay usable.
//
// Lost broker: after -6, -7 and -9 the content counts as lost, because each further call to a
// broker that has ended or hangs can take a minute. Which of the three comes is chance. While the
// content is lost, elements are released without a call. Other functions still call, and the next
// answer of the broker ends this state. If the window has gone with its broker, the content and its
// elements never work again: open a new content.
//
// Threads: any thread may use any handle. Calls of one content and its elements run one after
// another; a wait counts as one call. Different contents do not wait for each other. A handle that
// another thread frees during a call stays valid until that call has ended.
//
// The end: unloading the DLL or ending the process sends nothing. The broker keeps the objects of
// elements that were not released.
//
// Texts are UTF-16, end with a zero, and cannot hold U+0000. The caller frees a text that it
// receives with tessel_text_free.
#ifndef TESSELSLB_H
#define TESSELSLB_H

#include <stddef.h>
#include <stdint.h>
#include <wchar.h>

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

// Selects the broker of a content. With TESSEL_ANY_SCHEME, functions of a content search for it:
// first for the tailored one, then for the one of the address's scheme. If neither shows the
// content, a broker is injected into the window's process.
enum {
  TESSEL_ANY_SCHEME = 0,
  TESSEL_HTTP = 1,
  TESSEL_HTTPS = 2,
  TESSEL_FILE = 3,
  TESSEL_TAILORED = 4
};

typedef struct tessel_error {
  int32_t code;
  const wchar_t* name;      // of the code, for example "SL_CANNOT_READ"
  const wchar_t* meaning;   // what went wrong
  const wchar_t* cure;      // what to do
  const wchar_t* function;  // the module's function that failed
  const wchar_t* element;   // the element's id; empty if the call was not about one element
  const wchar_t* address;   // of the content; empty if it is not known
} tessel_error;

// In the broker's coordinates, as all points.
typedef struct tessel_rectangle {
  int32_t left, top, right, bottom;
} tessel_rectangle;

// Three texts and two options that select elements. The broker defines their meaning. For
// SceneBroker the texts are name, type and id, and an empty text matches everything. option1 is the
// number of levels to search: 1 means only the roots of a content, or only the children of an
// element, and 0 means all. If option2 is not 0, a text needs to be only a part. A null text counts
// as empty.
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

// Where an element is. `found` is its rectangle if tessel_content_find or tessel_element_find
// returned the element, else it is empty.
typedef struct tessel_place {
  void* window;
  uint32_t process;
  int32_t scheme;
  tessel_rectangle found;
} tessel_place;

// These two make no call and cannot fail. Null is allowed.
TESSEL_C_API void tessel_error_free(tessel_error* error);
TESSEL_C_API void tessel_text_free(wchar_t* text);

// The four numbers of the version of TesselSLB_c.dll.
TESSEL_C_API int32_t tessel_version(int32_t numbers[4], tessel_error** error);

// Contents.

// Opens the content of a window at an address. Makes no call. Fails with -5 if the window does not
// exist, or if not exactly one top-level window has exactly this title. The title is looked up only
// here. Of the address, the scheme and the host with its port select the broker; write them as the
// broker prints them.
TESSEL_C_API int32_t tessel_content_open(void* window, const wchar_t* address, int32_t scheme,
                                         tessel_content* content, tessel_error** error);
TESSEL_C_API int32_t tessel_content_open_title(const wchar_t* title, const wchar_t* address,
                                               int32_t scheme, tessel_content* content,
                                               tessel_error** error);

// Frees the handle. Makes no call.
TESSEL_C_API int32_t tessel_content_close(tessel_content content, tessel_error** error);

TESSEL_C_API int32_t tessel_content_window(tessel_content content, void** window,
                                           tessel_error** error);

// Each of these calls once, or once for each broker that a search asks.

// The element at a point. `option` is passed on to the broker.
TESSEL_C_API int32_t tessel_content_at(tessel_content content, int32_t x, int32_t y, int32_t option,
                                       tessel_element* element, tessel_error** error);

// The element that has the focus. This always searches. So a content with a scheme other than
// TESSEL_TAILORED is refused with -5.
TESSEL_C_API int32_t tessel_content_focused(tessel_content content, tessel_element* element,
                                            tessel_error** error);

// All matching elements, or the first one of them. find_first asks for all of them too, and
// releases the others by one call each, so a narrow search is faster.
TESSEL_C_API int32_t tessel_content_find(tessel_content content, const tessel_search* search,
                                         tessel_list* list, tessel_error** error);
TESSEL_C_API int32_t tessel_content_find_first(tessel_content content, const tessel_search* search,
                                               tessel_element* element, tessel_error** error);

// Elements.

// These two make no call.
TESSEL_C_API int32_t tessel_element_id(tessel_element element, wchar_t** id, tessel_error** error);
TESSEL_C_API int32_t tessel_element_place(tessel_element element, tessel_place* place,
                                          tessel_error** error);

// Each of these calls once.

TESSEL_C_API int32_t tessel_element_parent(tessel_element element, tessel_element* parent,
                                           tessel_error** error);

// The ancestors. tessel_list_number returns the number of each; the broker defines its meaning.
TESSEL_C_API int32_t tessel_element_ancestors(tessel_element element, tessel_list* list,
                                              tessel_error** error);

// The elements of the default selector.
TESSEL_C_API int32_t tessel_element_selector(tessel_element element, tessel_list* list,
                                             tessel_error** error);

// All matching elements below this one.
TESSEL_C_API int32_t tessel_element_find(tessel_element element, const tessel_search* search,
                                         tessel_list* list, tessel_error** error);

// `ancestor` may be 0. Otherwise the broker identifies the element relative to it. It must belong
// to the same content (-5).
TESSEL_C_API int32_t tessel_element_identify(tessel_element element, tessel_element ancestor,
                                             tessel_identity* identity, tessel_error** error);

TESSEL_C_API int32_t tessel_element_rectangle(tessel_element element, tessel_rectangle* rectangle,
                                              tessel_error** error);

// An attribute or a state. SceneBroker has the states "value", "checked" and "selected". The text
// is null if the broker answers with any positive status: the element has no such attribute, or it
// is gone.
TESSEL_C_API int32_t tessel_element_attribute(tessel_element element, const wchar_t* name,
                                              wchar_t** text, tessel_error** error);

// The texts of the items of a list (see tessel_list_text). The list is 0 if the broker answers with
// any positive status: the element is no list, or it is gone.
TESSEL_C_API int32_t tessel_element_items(tessel_element element, tessel_list* list,
                                          tessel_error** error);

// Success means that the broker has accepted the command. The content may change later: wait with
// tessel_wait_until_attribute.
TESSEL_C_API int32_t tessel_element_click(tessel_element element, tessel_error** error);
TESSEL_C_API int32_t tessel_element_set_value(tessel_element element, const wchar_t* text,
                                              tessel_error** error);
TESSEL_C_API int32_t tessel_element_set_focus(tessel_element element, tessel_error** error);
TESSEL_C_API int32_t tessel_element_check(tessel_element element, int32_t on, tessel_error** error);
TESSEL_C_API int32_t tessel_element_select(tessel_element element, const wchar_t* item,
                                           tessel_error** error);

// Both free the handle, also after a failure. Release calls once, unless the content is lost.
// Abandon makes no call: the broker keeps its object until it ends.
TESSEL_C_API int32_t tessel_element_release(tessel_element element, tessel_error** error);
TESSEL_C_API int32_t tessel_element_abandon(tessel_element element, tessel_error** error);

// Lists. A list holds elements, ancestors or texts. None of these functions calls, except for
// tessel_list_free.

TESSEL_C_API int32_t tessel_list_size(tessel_list list, size_t* size, tessel_error** error);

// An index beyond the end is refused with -5 in these functions.

// Takes the element out of the list. The handle is 0 if it was taken before, or if the list holds
// texts.
TESSEL_C_API int32_t tessel_list_take(tessel_list list, size_t index, tessel_element* element,
                                      tessel_error** error);

// The number of an ancestor, else 0.
TESSEL_C_API int32_t tessel_list_number(tessel_list list, size_t index, int32_t* number,
                                        tessel_error** error);

// The text, or the id of the element, which may have been taken.
TESSEL_C_API int32_t tessel_list_text(tessel_list list, size_t index, wchar_t** text,
                                      tessel_error** error);

// Frees the handle, and releases the elements that were not taken, by one call each.
TESSEL_C_API int32_t tessel_list_free(tessel_list list, tessel_error** error);

// Waiting. These functions look at once, and again after each interval, until the condition is met.
// Times are in milliseconds. Only the first look may start or inject a broker. Later ones use the
// scheme that was found, and fail with -7 without a call if that broker has ended. Each failure of
// a look ends the wait. After the time-out they return TESSEL_TIMED_OUT, and the error says what
// was waited for, how long, and what was seen last. A look that has begun is not cut short.

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

// A look of your own. It sets `met` to 1 if the condition is met. Otherwise it may set `seen` to a
// text that stays valid until the next look or the end of the wait. A result other than 0 ends the
// wait with that code. It runs on the thread that waits. It may use this interface, but only
// with this content: two looks that use each other's content could wait for each other for ever.
typedef int32_t (*tessel_look)(void* context, int32_t* met, const wchar_t** seen);

// `what` completes the sentence "waited until ...".
TESSEL_C_API int32_t tessel_wait_until(tessel_content content, const wchar_t* what,
                                       tessel_look look, void* context, uint32_t timeout,
                                       uint32_t interval, tessel_error** error);

#ifdef __cplusplus
}
#endif

#endif
