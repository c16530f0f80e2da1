#include "Harness.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace bench {

namespace {

using Clock = std::chrono::steady_clock;

#ifdef _WIN32
constexpr const char* kPlatform = "Wine";
#else
constexpr const char* kPlatform = "native";
#endif

double SecondsOf(const Row& row, std::size_t times) {
  const auto start = Clock::now();
  row.run(times);
  return std::chrono::duration<double>(Clock::now() - start).count();
}

// Returns how often the operation of `row` must be repeated to take about `seconds` seconds. To
// find out, runs the operation many times, which also fills the processor's caches.
std::size_t BatchSize(const Row& row, double seconds) {
  SecondsOf(row, 1);
  for (std::size_t times = 1;; times *= 2) {
    const double taken = SecondsOf(row, times);
    if (taken >= seconds / 2)
      return std::max<std::size_t>(1, static_cast<std::size_t>(times * seconds / taken));
  }
}

std::string Format(const char* format, auto... values) {
  char text[200];
  std::snprintf(text, sizeof(text), format, values...);
  return text;
}

std::string Duration(double seconds) {
  if (seconds < 1e-6) return Format("%.1f ns", seconds * 1e9);
  if (seconds < 1e-3) return Format("%.2f us", seconds * 1e6);
  return Format("%.2f ms", seconds * 1e3);
}

// Returns `text` as a JSON string. Escapes only quotes and backslashes, because titles and names
// contain no other characters that must be escaped.
std::string Quoted(const std::string& text) {
  std::string quoted = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') quoted += '\\';
    quoted += c;
  }
  return quoted + '"';
}

std::string JsonHead(const std::string& group, const std::string& title) {
  return "{\"platform\": " + Quoted(kPlatform) + ", \"group\": " + Quoted(group) +
         ", \"title\": " + Quoted(title);
}

void PrintTitle(const std::string& group, const std::string& title) {
  std::printf("\n%s (%s, %s)\n", title.c_str(), group.c_str(), kPlatform);
}

}  // namespace

Statistics Summarize(std::vector<double> samples) {
  std::sort(samples.begin(), samples.end());
  const auto at = [&samples](double share) {
    return samples[static_cast<std::size_t>(share * static_cast<double>(samples.size() - 1) + 0.5)];
  };
  return {at(0.5), at(0.25), at(0.75), at(0.99)};
}

Report::Report(int count, char** arguments) {
  for (int i = 1; i < count; ++i) {
    const std::string_view argument = arguments[i];
    if (argument == "--quick") {
      quick_ = true;
    } else if (argument == "--json" && i + 1 < count) {
      jsonFile_ = arguments[++i];
    } else {
      std::fprintf(stderr, "usage: %s [--quick] [--json FILE]\n", arguments[0]);
      std::exit(2);
    }
  }
}

std::vector<Statistics> Report::Measure(const Table& table) {
  const bool calls = table.sampling == Sampling::kCalls;
  const std::size_t rounds = calls ? table.calls : quick_ ? 15 : 61;
  std::vector<std::size_t> batches;
  for (const Row& row : table.rows) {
    if (calls) SecondsOf(row, 50);
    batches.push_back(calls ? 1 : BatchSize(row, quick_ ? 2e-3 : 5e-3));
  }
  std::vector<std::vector<double>> samples(table.rows.size());
  for (std::size_t round = 0; round < rounds; ++round) {
    for (std::size_t i = 0; i < table.rows.size(); ++i) {
      // Each round runs the operations in another order, so that no operation always follows the
      // same one.
      const std::size_t index =
          (i * (round % 2 == 0 ? 1 : table.rows.size() - 1) + round) % table.rows.size();
      const Row& row = table.rows[index];
      const double operations = static_cast<double>(batches[index] * row.elements);
      samples[index].push_back(SecondsOf(row, batches[index]) / operations);
    }
  }
  std::vector<Statistics> results;
  for (auto& rowSamples : samples) results.push_back(Summarize(std::move(rowSamples)));
  Print(table, results);
  return results;
}

void Report::Print(const Table& table, const std::vector<Statistics>& results) {
  const bool calls = table.sampling == Sampling::kCalls;
  const Statistics& base = results[table.base];
  PrintTitle(table.group, table.title);
  std::printf("  %-36s %11s %25s %7s%s\n", "", "median", "quartiles", "ratio",
              calls ? "         p99   ratio" : "");
  std::string json = JsonHead(table.group, table.title) +
                     ", \"base\": " + Quoted(table.rows[table.base].name) + ", \"rows\": [";
  for (std::size_t i = 0; i < results.size(); ++i) {
    const Statistics& result = results[i];
    const std::string spread =
        Duration(result.lowerQuartile) + " - " + Duration(result.upperQuartile);
    std::printf("  %-36s %11s %25s %7.2f", table.rows[i].name.c_str(),
                Duration(result.median).c_str(), spread.c_str(), result.median / base.median);
    if (calls) {
      std::printf(" %11s %7.2f", Duration(result.percentile99).c_str(),
                  result.percentile99 / base.percentile99);
    }
    std::printf("\n");
    json +=
        Format("%s{\"name\": ", i == 0 ? "" : ", ") + Quoted(table.rows[i].name) +
        Format(", \"median\": %.6g, \"quartiles\": [%.6g, %.6g], \"ratio\": %.4g", result.median,
               result.lowerQuartile, result.upperQuartile, result.median / base.median);
    if (calls)
      json += Format(", \"p99\": %.6g, \"p99_ratio\": %.4g", result.percentile99,
                     result.percentile99 / base.percentile99);
    json += "}";
  }
  std::fflush(stdout);
  AppendJson(json + "]}");
}

void Report::Print(const Grid& grid) {
  PrintTitle(grid.group, grid.title);
  std::printf("  %-36s", grid.columns[0].c_str());
  for (std::size_t i = 1; i < grid.columns.size(); ++i)
    std::printf(" %15s", grid.columns[i].c_str());
  std::string json = JsonHead(grid.group, grid.title) + ", \"rows\": [";
  for (const Grid::Line& line : grid.lines) {
    std::printf("\n  %-36s", line.name.c_str());
    json += (&line == &grid.lines[0] ? "{\"name\": " : ", {\"name\": ") + Quoted(line.name);
    for (std::size_t i = 0; i < line.values.size(); ++i) {
      std::printf(" %15s", Format(line.values[i] < 1000 ? "%.4g" : "%.0f", line.values[i]).c_str());
      // A ratio to 0 is infinite, but JSON has no infinity.
      const bool isNumber = std::isfinite(line.values[i]);
      json += ", " + Quoted(grid.columns[i + 1]) +
              (isNumber ? Format(": %.6g", line.values[i]) : ": null");
    }
    json += "}";
  }
  std::printf("\n");
  std::fflush(stdout);
  AppendJson(json + "]}");
}

void Report::AppendJson(const std::string& line) {
  if (jsonFile_.empty()) return;
  std::FILE* file = std::fopen(jsonFile_.c_str(), "ab");
  if (file == nullptr) {
    std::fprintf(stderr, "cannot write %s\n", jsonFile_.c_str());
    std::exit(1);
  }
  std::fprintf(file, "%s\n", line.c_str());
  std::fclose(file);
}

}  // namespace bench
