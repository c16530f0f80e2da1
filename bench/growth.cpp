// Measures how long it takes to read answers of 10 to 1,000,000 elements, and how much memory. Time
// and memory per element should not depend on the number of elements.
#include <algorithm>

#include "Harness.h"
#include "HeapCount.h"
#include "Ours.h"
#include "ReadOut.h"

namespace {

using namespace bench;

double PeakOf(const Workload& workload, const Text& text) {
  const std::size_t before = CurrentHeap().bytes;
  ResetHeapPeak();
  ReadOut<OursDocument>(text, workload.kinds);
  return static_cast<double>(CurrentHeap().peak - before);
}

double LargestRatio(const std::vector<double>& values) {
  const auto [least, most] = std::minmax_element(values.begin(), values.end());
  return *most / *least;
}

void MeasureKind(Report& report, const char* kind, Workload (*make)(std::size_t)) {
  std::vector<Workload> workloads;
  for (std::size_t count = 10; count <= 1000000; count *= 10) workloads.push_back(make(count));
  Table table = {"growth", std::string("text to ") + kind + ", time per element", {}, 2};
  Grid grid = {"growth",
               std::string("text to ") + kind + ": peak of the heap, bytes per element",
               {"", "bytes/element"},
               {}};
  std::vector<double> peaks;
  for (const Workload& workload : workloads) {
    const std::size_t elements = workload.values.size();
    const std::string name = std::to_string(elements) + " elements";
    const Text text(ViewOf(WriteOurs(workload.values)));
    table.rows.push_back(MakeRow(
        name, [&workload, text] { ReadOut<OursDocument>(text, workload.kinds); }, elements));
    peaks.push_back(PeakOf(workload, text) / static_cast<double>(elements));
    grid.lines.push_back({name, {peaks.back()}});
  }
  std::vector<double> medians;
  for (const Statistics& result : report.Measure(table)) medians.push_back(result.median);
  report.Print(grid);
  const auto from = [](const std::vector<double>& values, std::ptrdiff_t first) {
    return LargestRatio({values.begin() + first, values.end()});
  };
  report.Print({"growth",
                std::string(kind) + ": largest value per element divided by the smallest",
                {"", "time", "peak"},
                {{"10 to 1,000,000 elements", {from(medians, 0), from(peaks, 0)}},
                 {"1,000 to 1,000,000 elements", {from(medians, 2), from(peaks, 2)}}}});
}

}  // namespace

int main(int count, char** arguments) {
  Report report(count, arguments);
  MeasureKind(report, "ints", MakeInts);
  MeasureKind(report, "texts", MakeShortTexts);
}
