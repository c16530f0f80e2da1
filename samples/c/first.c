// Reads the note of the scene "Orders", and writes another one.
#include <fcntl.h>
#include <io.h>
#include <stdio.h>

#include <tesselslb.h>

int main(void) {
  const tessel_search search = {.text3 = L"note"};
  tessel_content content = 0;
  tessel_element note = 0;
  wchar_t* text = NULL;
  tessel_error* error = NULL;
  _setmode(1 /*stdout*/, _O_U8TEXT);  // wprintf stops at a letter such as U+00E9 otherwise
  if (tessel_content_open_title(L"Orders", L"https://orders.example:8443/desk/", SL_NO_URI,
                                &content, &error) == 0 &&
      tessel_wait_until_there(content, &search, 10000, 250, &note, &error) == 0 &&
      tessel_element_attribute(note, L"value", &text, &error) == 0 &&
      tessel_element_set_value(note, L"Delivered", &error) == 0) {
    wprintf(L"the note was \"%ls\"\n", text == NULL ? L"" : text);
  }
  const int code = error == NULL ? 0 : 1;
  if (error != NULL) wprintf(L"%ls; to do: %ls\n", error->meaning, error->cure);
  tessel_error_free(error);
  tessel_text_free(text);
  tessel_element_release(note, NULL);
  tessel_content_close(content, NULL);
  return code;
}
