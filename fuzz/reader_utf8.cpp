// Fuzzes the JSON reader for UTF-8 with any bytes.
#include "fuzz/ReaderProperties.h"
#include "fuzz/Require.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes(data, data + size);
  const auto read = ReadChecked(std::string_view(bytes));
  bool well_formed = false;
  const std::u32string codes = plain::Decode(bytes, &well_formed);
  if (well_formed) {
    const base::Utf16Text text = plain::ToUtf16(codes);
    Require(SameDocument(read, Read(base::Utf16View(text))), "both readers read the same");
  }
  return 0;
}
