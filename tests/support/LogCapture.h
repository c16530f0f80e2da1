// Collects the log lines of this process, from the debugger output of all its threads. Sets the log
// level in the registry to VERBOSE, unless the constructor receives false. All suites in a Wine
// prefix share the level.
#pragma once

#include <windows.h>

#include <atomic>
#include <cstring>
#include <memory>
#include <mutex>

#include "support/Text.h"

class LogCapture {
 public:
  explicit LogCapture(bool verbose = true) {
    if (verbose) SetLevel("VERBOSE");
    Reset();
  }

  // Sets the user's level, or the level below another registry key. Null deletes the value.
  static void SetLevel(const char* level, HKEY root = HKEY_CURRENT_USER,
                       const char* key = "Environment", DWORD type = REG_SZ) {
    if (level == nullptr) {
      ::RegDeleteKeyValueA(root, key, "TESSEL_LOG_LEVEL");
      return;
    }
    // Overwrites the old value without deleting it, so that other suites never find it missing.
    const auto size = static_cast<DWORD>(std::strlen(level) + 1);
    ::RegSetKeyValueA(root, key, "TESSEL_LOG_LEVEL", type, level, size);
  }

  static void Reset() {
    const std::lock_guard lock(mutex_);
    lines_.clear();
  }

  // If set, this function is called with each line, on the thread that logs the line. So a test can
  // stop a call at a known line and do something else before the call goes on.
  static inline std::atomic<void (*)(const char* line)> pause{nullptr};

  // Returns the whole lines: "{thread} [time:LEVEL:(version) File.cpp(line)] message\n".
  static Texts Lines() {
    const std::lock_guard lock(mutex_);
    return lines_;
  }

  // Returns "LEVEL message" for each line of level `lowest` or above, in order. If `thread` is not
  // 0, returns only the lines of that thread.
  static Texts Messages(const std::string& lowest = "ERROR", DWORD thread = 0) {
    static const std::string kLevels[] = {"VERBOSE1", "INFO", "WARNING", "ERROR", "FATAL"};
    const auto rank = [](const auto& level) { return std::ranges::find(kLevels, level); };
    Texts result;
    for (std::string& line : Lines()) {
      if (thread != 0 && !line.starts_with('{' + std::to_string(thread) + '}')) continue;
      line.resize(line.find_last_not_of('\n') + 1);
      line.erase(0, line.find(':') + 1);
      const std::string level = line.substr(0, line.find(':'));
      if (rank(level) >= rank(lowest)) result.push_back(level + line.substr(line.find(")] ") + 2));
    }
    return result;
  }

  static std::size_t Count(const std::string& message) {
    return std::ranges::count(Messages("VERBOSE1"), message,
                              [](auto& line) { return Cut(line, " ").second; });
  }

 private:
  static LONG CALLBACK OnException(EXCEPTION_POINTERS* pointers) {
    const EXCEPTION_RECORD& record = *pointers->ExceptionRecord;
    constexpr DWORD kDebuggerOutput = 0x40010006;
    if (record.ExceptionCode != kDebuggerOutput || record.NumberParameters < 2) {
      return EXCEPTION_CONTINUE_SEARCH;
    }
    const auto* text = reinterpret_cast<const char*>(record.ExceptionInformation[1]);
    // The test framework sends its failures to the debugger, too, but they do not begin with a
    // thread id.
    if (*text != '{') return EXCEPTION_CONTINUE_EXECUTION;
    {
      const std::lock_guard lock(mutex_);
      lines_.emplace_back(text);
    }
    if (const auto held = pause.load()) held(text);
    return EXCEPTION_CONTINUE_EXECUTION;
  }

  static inline std::mutex mutex_;
  static inline Texts lines_;
  const std::unique_ptr<void, decltype(&::RemoveVectoredExceptionHandler)> handler_{
      ::AddVectoredExceptionHandler(1 /*first*/, &OnException), &::RemoveVectoredExceptionHandler};
};
