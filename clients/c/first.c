// Finds an element of the sign-in form, reads its value, and sets another value.
#include <fcntl.h>
#include <io.h>
#include <stdio.h>

#include <tesselslb.h>

int main(void) {
  const tessel_search search = {.text3 = L"user"};
  tessel_content content = 0;
  tessel_element user = 0;
  wchar_t* value = NULL;
  tessel_error* error = NULL;
  _setmode(1 /*stdout*/, _O_U8TEXT);
  if (tessel_content_open_title(L"Caf\u00e9 Gr\u00f6\u00dfe \u2013 Sign in",
                                L"http://shop.example/portal/login.html", SL_NO_URI,
                                &content, &error) == 0 &&
      tessel_content_find_first(content, &search, &user, &error) == 0) {
    if (user == 0) {
      wprintf(L"no element has the id \"user\"\n");
    } else if (tessel_element_attribute(user, L"value", &value, &error) == 0 &&
               tessel_element_set_value(user, L"Ada", &error) == 0) {
      wprintf(L"the value was \"%ls\"\n", value == NULL ? L"" : value);
    }
  }
  const int code = error == NULL ? 0 : 2;
  if (error != NULL) fwprintf(stderr, L"%ls; to do: %ls\n", error->meaning, error->cure);
  tessel_error_free(error);
  tessel_text_free(value);
  if (user != 0) tessel_element_release(user, NULL);
  if (content != 0) tessel_content_close(content, NULL);
  return code;
}
