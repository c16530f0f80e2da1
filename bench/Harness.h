// Measures the rows of a table side by side: in every round each row runs one batch, so that what
// disturbs the machine disturbs all of them alike.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace bench {

// What the batches compute goes here, so that no compiler leaves them out.
inline volatile std::size_t sink;

struct Row {
  std::string name;
  std::function<void(std::size_t times)> run;
  std::size_t elements = 1;  // an operation's time is divided by this
};

// A row whose operation is `once`.
template <class Once>
Row MakeRow(std::string name, Once once, std::size_t elements = 1) {
  return {std::move(name),
          [once](std::size_t times) mutable {
            for (std::size_t i = 0; i < times; ++i) once();
          },
          elements};
}

enum class Sampling {
  kBatches,  // a sample is the mean of a batch that is long enough for the clock
  kCalls,    // a sample is one call; the 99th percentile is shown, too
};

struct Table {
  std::string group;
  std::string title;
  std::vector<Row> rows;
  std::size_t base = 0;  // the row that the others are compared with
  Sampling sampling = Sampling::kBatches;
  std::size_t calls = 0;  // of each row, for kCalls
};

// Seconds an operation or element.
struct Statistics {
  double median, lowerQuartile, upperQuartile, percentile99;
};
Statistics Summarize(std::vector<double> samples);

// What tables other than those of times hold.
struct Grid {
  std::string group;
  std::string title;
  std::vector<std::string> columns;  // the first is the name's
  struct Line {
    std::string name;
    std::vector<double> values;
  };
  std::vector<Line> lines;
};

// Prints tables as text, and to a file one JSON object a line.
class Report {
 public:
  // From the arguments `--quick` and `--json FILE`; ends the program on any other.
  Report(int count, char** arguments);

  bool Quick() const { return quick_; }

  // Measures and prints.
  std::vector<Statistics> Measure(const Table& table);
  void Print(const Grid& grid);

 private:
  void Print(const Table& table, const std::vector<Statistics>& results);
  void AppendJson(const std::string& line);

  bool quick_ = false;
  std::string jsonFile_;
};

}  // namespace bench
