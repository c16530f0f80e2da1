#include "json/Check.h"

#include <atomic>

namespace base {

namespace {

std::atomic<CheckFailedHook> check_failed_hook{nullptr};

}  // namespace

void SetCheckFailedHook(CheckFailedHook hook) { check_failed_hook = hook; }

void ReportCheckFailed(const char* condition) {
  if (const CheckFailedHook hook = check_failed_hook) hook(condition);
}

}  // namespace base
