// Measures operations and compares their times in a table, which has one row for each operation.
// In each round all operations take their turns: each runs once, or a number of times (a batch).
// So other load on the machine affects all rows in the same way.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace bench {

// The measured operations store their results here, so that the compiler cannot remove them.
inline volatile std::size_t sink;

struct Row {
  std::string name;
  std::function<void(std::size_t times)> run;
  // One operation handles this number of elements. The table shows the time for one element.
  std::size_t elements = 1;
};

// Makes a row of a table. The measured operation is one call of `once`, which handles `elements`
// elements.
template <class Once>
Row MakeRow(std::string name, Once once, std::size_t elements = 1) {
  return {std::move(name),
          [once](std::size_t times) mutable {
            for (std::size_t i = 0; i < times; ++i) once();
          },
          elements};
}

enum class Sampling {
  // A sample is the mean time of the operations in a batch. A batch takes some milliseconds, long
  // enough to be measured with the clock.
  kBatches,
  // A sample is the time of one call. The table also shows the 99th percentile.
  kCalls,
};

struct Table {
  std::string group;
  std::string title;
  std::vector<Row> rows;
  std::size_t base = 0;  // the index of the row with which all other rows are compared
  Sampling sampling = Sampling::kBatches;
  std::size_t calls = 0;  // the number of calls that each row makes, for kCalls only
};

// Times in seconds, for one operation or for one element.
struct Statistics {
  double median, lowerQuartile, upperQuartile, percentile99;
};
Statistics Summarize(std::vector<double> samples);

// A table of values that are not measured times.
struct Grid {
  std::string group;
  std::string title;
  std::vector<std::string> columns;  // the titles; the first column contains the names
  struct Line {
    std::string name;
    std::vector<double> values;
  };
  std::vector<Line> lines;
};

// Prints tables as text, and appends each table to a file as a line with one JSON object.
class Report {
 public:
  // Reads the arguments `--quick` and `--json FILE`. Ends the program for any other argument.
  Report(int count, char** arguments);

  bool Quick() const { return quick_; }

  // Measures the rows and prints the table.
  std::vector<Statistics> Measure(const Table& table);
  void Print(const Grid& grid);

 private:
  void Print(const Table& table, const std::vector<Statistics>& results);
  void AppendJson(const std::string& line);

  bool quick_ = false;
  std::string jsonFile_;
};

}  // namespace bench
