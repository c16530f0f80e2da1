// Prints the same as report.cpp, but uses the C interface. GCC compiles this file. Clang compiles
// it once more for Microsoft's binary interface, where no start-up code exists. So the title and
// the address of the content come from the environment variables TITLE and ADDRESS.
#include <stdio.h>
#include "tesselslb.h"

__declspec(dllimport) int WideCharToMultiByte(unsigned page, unsigned long flags,
                                              const wchar_t* from, int units, char* to, int bytes,
                                              const char* other, int* used);
void exit(int code);

_Static_assert(sizeof(tessel_error) == 56 && sizeof(tessel_search) == 32 &&
                   sizeof(tessel_identity) == 32 && sizeof(tessel_place) == 32 &&
                   sizeof(tessel_rectangle) == 16,
               "layouts are part of the interface");

static tessel_error* error;

static const char* Narrow(const wchar_t* text) {
  static char buffers[8][600];
  static int next;
  char* const buffer = buffers[next++ % 8];
  WideCharToMultiByte(65001, 0, text == NULL ? L"none" : text, -1, buffer, 600, NULL, NULL);
  return buffer;
}

// Ends the program if a call has failed.
static void Must(int32_t code) {
  if (code == 0) return;
  printf("failed: %d %s\n", code, Narrow(error->meaning));
  exit(1);
}

static void MustFail(int32_t code) {
  if (code != error->code) exit(2);
  printf("error %d %s: %s; %s (%s, \"%s\", %s)\n", error->code, Narrow(error->name),
         Narrow(error->meaning), Narrow(error->cure), Narrow(error->function),
         Narrow(error->element), Narrow(error->address));
  tessel_error_free(error);
}

// Prints the text in quotes, or "none".
static void PrintAttribute(const char* label, tessel_element element, const wchar_t* name,
                           const char* end) {
  wchar_t* text;
  Must(tessel_element_attribute(element, name, &text, &error));
  printf(text == NULL ? "%s %s%s" : "%s \"%s\"%s", label, Narrow(text), end);
  tessel_text_free(text);
}

static void PrintRectangle(const char* label, tessel_rectangle r, const char* end) {
  printf("%s [%d %d %d %d]%s", label, r.left, r.top, r.right, r.bottom, end);
}

// Prints the id of the element, and releases the element. `element` may be 0.
static void PrintId(const char* label, tessel_element element, const char* end) {
  wchar_t* id = NULL;
  if (element != 0) Must(tessel_element_id(element, &id, &error));
  printf("%s%s%s", label, Narrow(id), end);
  tessel_text_free(id);
  if (element != 0) Must(tessel_element_release(element, &error));
}

static void PrintElement(tessel_element element) {
  wchar_t* id;
  tessel_place place;
  Must(tessel_element_id(element, &id, &error));
  Must(tessel_element_place(element, &place, &error));
  PrintRectangle(Narrow(id), place.found, "");
  tessel_text_free(id);
  PrintAttribute("", element, L"type", "\n");
}

static void PrintList(const char* label, tessel_list list, int numbered) {
  size_t count;
  Must(tessel_list_size(list, &count, &error));
  for (size_t i = 0; i < count; ++i) {
    wchar_t* text;
    int32_t number;
    Must(tessel_list_text(list, i, &text, &error));
    Must(tessel_list_number(list, i, &number, &error));
    printf(numbered ? "%s %s %d\n" : "%s %s\n", label, Narrow(text), number);
    tessel_text_free(text);
  }
  Must(tessel_list_free(list, &error));
}

static void PrintPlace(tessel_element element) {
  tessel_list list;
  tessel_identity own, relative;
  tessel_element parent;
  tessel_rectangle rectangle;
  Must(tessel_element_items(element, &list, &error));
  PrintList("item", list, 0);
  Must(tessel_element_ancestors(element, &list, &error));
  PrintList("ancestor", list, 1);
  Must(tessel_element_selector(element, &list, &error));
  PrintList("selector", list, 0);
  Must(tessel_element_parent(element, &parent, &error));
  Must(tessel_element_identify(element, 0, &own, &error));
  Must(tessel_element_identify(element, parent, &relative, &error));
  printf("identity %s|%s|%s %d %d\n", Narrow(own.text1), Narrow(own.text2), Narrow(own.text3),
         own.number, relative.number);
  wchar_t* texts[] = {own.text1,      own.text2,      own.text3,
                      relative.text1, relative.text2, relative.text3};
  for (int i = 0; i < 6; ++i) tessel_text_free(texts[i]);
  PrintId("parent ", parent, ", ");
  Must(tessel_element_rectangle(element, &rectangle, &error));
  PrintRectangle("rectangle", rectangle, "\n");
}

static void Drive(tessel_content content, tessel_element user, tessel_element list) {
  tessel_element box, focused;
  Must(tessel_element_set_value(user, L"Zo\u00eb \U0001d11e", &error));
  PrintAttribute("value", user, L"value", "\n");
  Must(tessel_element_select(list, L"\u0141\u00f3d\u017a", &error));
  PrintAttribute("selected", list, L"selected", "\n");
  Must(tessel_content_at(content, 320, 344, 0, &box, &error));
  Must(tessel_element_check(box, 1, &error));
  Must(tessel_wait_until_attribute(box, L"checked", L"true", 5000, 10, &error));
  Must(tessel_element_click(box, &error));
  PrintAttribute("remember", box, L"checked", "\n");
  Must(tessel_element_release(box, &error));
  Must(tessel_element_set_focus(list, &error));
  Must(tessel_content_focused(content, &focused, &error));
  PrintId("focus ", focused, "\n");
}

static void Fail(tessel_content content, tessel_element user) {
  const tessel_search nobody = {NULL, NULL, L"nobody", 0, 0}, same = {NULL, NULL, L"user", 0, 0};
  tessel_element none;
  tessel_list items;
  Must(tessel_content_at(content, -1, -1, 0, &none, &error));
  PrintId("at ", none, ", ");
  PrintAttribute("attribute", user, L"nope", ", ");
  Must(tessel_element_items(user, &items, &error));
  printf("items %s\n", items == 0 ? "none" : "some");
  MustFail(tessel_element_select(user, L"x", &error));
  MustFail(tessel_wait_until_there(content, &nobody, 0, 10, &none, &error));
  MustFail(tessel_wait_until_gone(content, &same, 0, 10, &error));
}

int main(void) {
  const tessel_search all = {NULL, NULL, NULL, 0, 0}, byId = {NULL, NULL, L"user", 0, 0},
                      byType = {NULL, L"ListBox", NULL, 0, 0};
  tessel_content content;
  tessel_list elements;
  tessel_element user, list, element;
  size_t count;
  Must(tessel_content_open_title(_wgetenv(L"TITLE"), _wgetenv(L"ADDRESS"), SL_NO_URI, &content,
                                 &error));
  Must(tessel_content_find(content, &all, &elements, &error));
  Must(tessel_list_size(elements, &count, &error));
  for (size_t i = 0; i < count; ++i) {
    Must(tessel_list_take(elements, i, &element, &error));
    PrintElement(element);
    Must(tessel_element_release(element, &error));
  }
  Must(tessel_list_free(elements, &error));
  Must(tessel_content_find_first(content, &byId, &user, &error));
  Must(tessel_content_find_first(content, &byType, &list, &error));
  PrintPlace(list);
  Drive(content, user, list);
  Fail(content, user);
  Must(tessel_element_release(user, &error));
  Must(tessel_content_close(content, &error));
  Must(tessel_element_release(list, &error));  // an element outlives its content's handle
  return 0;
}

#ifdef _MSC_VER
void Start(void) { exit(main()); }
#endif
