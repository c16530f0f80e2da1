// Reads the note of the scene "Orders", and writes another one.
#include <iostream>

#include <tessel/Client.h>

int main() try {
  tessel::Content content(L"Orders", L"https://orders.example:8443/desk/");
  tessel::Element note =
      tessel::WaitUntil(tessel::IsThere(content, {.text3 = L"note"}), std::chrono::seconds(10));
  const std::wstring text = note.Attribute(L"value").value_or(L"");
  std::cout << "the note was " << tessel::Quoted(text) << std::endl;
  note.SetValue(L"Delivered");
} catch (const std::exception& error) {
  std::cerr << error.what() << std::endl;
  return 1;
}
