// Runs a fuzzer once with every file of the given folders, so that the fuzzer's seeds become a
// test.
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "fuzz/Require.h"

int main(int argc, char** argv) {
  int count = 0;
  for (int i = 1; i < argc; ++i) {
    for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
      std::ifstream file(entry.path(), std::ios::binary);
      const std::vector<std::uint8_t> bytes(std::istreambuf_iterator<char>(file), {});
      std::printf("%s\n", entry.path().filename().c_str());
      std::fflush(stdout);
      LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
      ++count;
    }
  }
  Require(count > 0, "there are seeds");
  std::printf("%d seeds\n", count);
}
