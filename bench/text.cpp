// Measures how long it takes to read values from the text of a message, and to write values as
// text. Compares this project's library with other JSON libraries.
#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "Harness.h"
#include "Nlohmann.h"
#include "Ours.h"
#include "Rapid.h"
#include "ReadOut.h"
#ifndef _WIN32
#include "Simdjson.h"
#endif

namespace {

using namespace bench;

constexpr const char* kOurs = "TesselSLB";

void Require(bool same, const std::string& row, const Workload& workload) {
  if (same) return;
  std::fprintf(stderr, "%s: %s: other values or text than ours\n", workload.name.c_str(),
               row.c_str());
  std::exit(1);
}

// The rows of the table for one workload. In each row, one JSON library reads or writes the
// workload. Its result is checked once before the time is measured.
class Rows {
 public:
  explicit Rows(const Workload& workload)
      : workload_(workload), text_(ViewOf(WriteOurs(workload.values))) {}

  template <class Document>
  void AddReader(const char* name) {
    Require(CollectValues<Document>(text_, workload_.kinds) == workload_.values, name, workload_);
    rows_.push_back(MakeRow(name, [this] { ReadOut<Document>(text_, workload_.kinds); }));
  }

  template <class Write>
  void AddWriter(const char* name, Write write) {
    Require(ViewOf(write(workload_.values)) == ViewOf(text_), name, workload_);
    rows_.push_back(MakeRow(name, [this, write] {
      const auto text = write(workload_.values);
      sink = sink + ViewOf(text).size();
    }));
  }

  // Measures the rows. Returns the time of the fastest other JSON library, divided by the time of
  // this project's library. The first row must be the row of this project's library.
  double Measure(Report& report, const char* direction) {
    const auto results =
        report.Measure({"text", workload_.name + ": " + direction, std::move(rows_)});
    rows_.clear();
    double fastest = results[1].median;
    for (std::size_t i = 2; i < results.size(); ++i) fastest = std::min(fastest, results[i].median);
    return fastest / results[0].median;
  }

 private:
  const Workload& workload_;
  const Text text_;
  std::vector<Row> rows_;
};

}  // namespace

int main(int count, char** arguments) {
  Report report(count, arguments);
  Grid summary = {
      "text", "time of the fastest rival divided by ours", {"", "reading", "writing"}, {}};
  for (const Workload& workload : AllWorkloads()) {
    Rows rows(workload);
    rows.AddReader<OursDocument>(kOurs);
    rows.AddReader<RapidUtf16Document>("RapidJSON, UTF-16");
    rows.AddReader<RapidUtf8Document>("RapidJSON, converted");
    rows.AddReader<RapidInSituDocument>("RapidJSON, converted, in situ");
    rows.AddReader<NlohmannDocument>("nlohmann::json, converted");
    rows.AddReader<NlohmannUtf16Document>("nlohmann::json, UTF-16");
#ifndef _WIN32
    rows.AddReader<SimdjsonDocument>("simdjson, converted");
    rows.AddReader<SimdjsonOnDemandDocument>("simdjson on demand, converted");
#endif
    const double reading = rows.Measure(report, "text to values");
    rows.AddWriter(kOurs, WriteOurs);
    rows.AddWriter("RapidJSON, UTF-16", WriteRapidUtf16);
    rows.AddWriter("RapidJSON, converted", WriteRapidUtf8);
    rows.AddWriter("nlohmann::json, converted", WriteNlohmann);
    const double writing = rows.Measure(report, "values to text");
    summary.lines.push_back({workload.name, {reading, writing}});
  }
  report.Print(summary);
}
