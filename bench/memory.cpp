// What a loaded message keeps on the heap, beside RapidJSON's documents.
#include "Harness.h"
#include "HeapCount.h"
#include "Ours.h"
#include "Rapid.h"

namespace {

using namespace bench;

// In situ in a text of its own length: how much the converter reserves is not RapidJSON's affair.
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
HeapUse Kept(const Text& text) {
  const HeapUse before = CurrentHeap();
  const Document document(text);
  const HeapUse after = CurrentHeap();
  return {after.bytes - before.bytes, after.blocks - before.blocks, 0, 0};
}

}  // namespace

int main(int count, char** arguments) {
  Report report(count, arguments);
  std::vector<Workload> workloads = AllWorkloads();
  workloads.push_back(MakeInts(10000));
  workloads.back().name = "10,000 ints";
  for (const Workload& workload : workloads) {
    const Text text(ViewOf(WriteOurs(workload.values)));
    const auto elements = static_cast<double>(workload.values.size());
    const auto line = [&](const char* name, const HeapUse& kept) {
      return Grid::Line{name,
                        {static_cast<double>(kept.bytes) / elements,
                         static_cast<double>(kept.bytes), static_cast<double>(kept.blocks)}};
    };
    report.Print({"memory",
                  workload.name + ": heap of the loaded message",
                  {"", "bytes/element", "bytes", "blocks"},
                  {line("TesselSLB", Kept<OursDocument>(text)),
                   line("RapidJSON, UTF-16", Kept<RapidUtf16Document>(text)),
                   line("RapidJSON, UTF-8", Kept<RapidUtf8Document>(text)),
                   line("RapidJSON, UTF-8, in situ", Kept<TightInSituDocument>(text))}});
  }
}
