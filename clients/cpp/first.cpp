// Finds an element of the sign-in form, reads its value, and sets another value.
#include <cstdio>
#include <exception>

#include <tessel/Client.h>

int main() {
  try {
    tessel::Content content(L"Caf\u00e9 Gr\u00f6\u00dfe \u2013 Sign in",
                            L"http://shop.example/portal/login.html");
    std::optional<tessel::Element> user = content.FindFirst({.text3 = L"user"});
    if (!user) {
      std::puts("no element has the id \"user\"");
      return 1;
    }
    const std::wstring value = user->Attribute(L"value").value_or(L"");
    std::printf("the value was %s\n", tessel::Quoted(value).c_str());
    user->SetValue(L"Ada");
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 2;
  }
}
