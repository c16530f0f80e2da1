#include "tools/inspector/Output.h"

#include <iostream>

void Print(const Report& report, const InspectorOptions& options) {
  std::cout << (options.json ? report.JsonText() : report.Lines()) << std::flush;
}

StatisticsAtEnd::~StatisticsAtEnd() {
  if (!options_.stats) return;
  std::cerr << (options_.json ? statistics_.JsonLine() : statistics_.Lines()) << std::flush;
}
