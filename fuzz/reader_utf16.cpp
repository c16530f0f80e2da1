// Fuzzes the JSON reader with UTF-16 text.
#include "fuzz/ReaderProperties.h"
#include "fuzz/Require.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const base::Utf16Text text = UnitsOf(data, size);
  const std::string utf8 = plain::ToUtf8(plain::Decode(base::Utf16View(text)));
  Require(SameDocument(ReadChecked(base::Utf16View(text)), Read(std::string_view(utf8))),
          "both readers read the same");
  return 0;
}
