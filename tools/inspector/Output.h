// Part of tessel. Prints what a command has to say: its report, and the statistics of its calls.
#pragma once

#include "tools/inspector/CallStatistics.h"
#include "tools/inspector/InspectorOptions.h"
#include "tools/inspector/Report.h"

// Prints the report to standard output, as text or as JSON.
void Print(const Report& report, const InspectorOptions& options);

// Prints the statistics to standard error at the end of its scope, if the options ask for them.
// Does so after a failure, too.
class StatisticsAtEnd {
 public:
  StatisticsAtEnd(const CallStatistics& statistics, const InspectorOptions& options)
      : statistics_(statistics), options_(options) {}
  ~StatisticsAtEnd();
  StatisticsAtEnd(const StatisticsAtEnd&) = delete;
  StatisticsAtEnd& operator=(const StatisticsAtEnd&) = delete;

 private:
  const CallStatistics& statistics_;
  const InspectorOptions& options_;
};
