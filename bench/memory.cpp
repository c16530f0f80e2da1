// Shows how much heap memory a message uses after it is read, and how many bytes are requested
// while it is read. Compares both with RapidJSON's documents.
#include "Harness.h"
#include "HeapCount.h"
#include "Ours.h"
#include "Rapid.h"

namespace {

using namespace bench;

// Parses in situ: the strings of the document stay in `utf8_`, so `utf8_` counts as memory of the
// document. Its unused capacity comes from the benchmark's own converter and must not count against
// RapidJSON, so it is freed.
class TightInSituDocument : public RapidUtf8Document {
 public:
  explicit TightInSituDocument(TextView text) : utf8_(ToUtf8(text)) {
    utf8_.shrink_to_fit();
    document_.ParseInsitu(utf8_.data());
  }

 private:
  std::string utf8_;
};

template <class Document>
Grid::Line LineOf(const char* name, const Text& text, std::size_t elements) {
  const HeapUse before = CurrentHeap();
  const Document document(text);
  const HeapUse after = CurrentHeap();
  const auto bytes = static_cast<double>(after.bytes - before.bytes);
  return {name,
          {bytes / static_cast<double>(elements), bytes,
           static_cast<double>(after.blocks - before.blocks),
           static_cast<double>(after.asked - before.asked)}};
}

}  // namespace

int main(int count, char** arguments) {
  Report report(count, arguments);
  std::vector<Workload> workloads = AllWorkloads();
  workloads.push_back(MakeInts(10000));
  workloads.back().name = "10,000 ints";
  for (const Workload& workload : workloads) {
    const Text text(ViewOf(WriteOurs(workload.values)));
    const std::size_t elements = workload.values.size();
    report.Print({"memory",
                  workload.name + ": heap of the loaded message",
                  {"", "bytes/element", "bytes", "blocks", "bytes requested"},
                  {LineOf<OursDocument>("TesselSLB", text, elements),
                   LineOf<RapidUtf16Document>("RapidJSON, UTF-16", text, elements),
                   LineOf<RapidUtf8Document>("RapidJSON, UTF-8", text, elements),
                   LineOf<TightInSituDocument>("RapidJSON, UTF-8, in situ", text, elements)}});
  }
}
