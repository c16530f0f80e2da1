#include "json/Check.h"

#include <atomic>

namespace base {

namespace {

std::atomic<CheckFailedHook> checkFailedHook{nullptr};

}  // namespace

void SetCheckFailedHook(CheckFailedHook hook) { checkFailedHook = hook; }

void ReportCheckFailed(const char* condition) {
  if (const CheckFailedHook hook = checkFailedHook) hook(condition);
}

}  // namespace base
