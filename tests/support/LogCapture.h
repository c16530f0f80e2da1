// Collects this process's log lines where they leave it: as the debugger output of every thread.
// Asks the registry for all of them unless told not to; the level is the same for every suite in
// the prefix.
#pragma once

#include <windows.h>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <string>
#include <vector>

class LogCapture {
 public:
  enum class Level { kVerbose, kAsItStands };

  explicit LogCapture(Level level = Level::kVerbose) {
    if (level == Level::kVerbose) {
      ::RegSetKeyValueA(HKEY_CURRENT_USER, "Environment", "TESSEL_LOG_LEVEL", REG_SZ, "VERBOSE",
                        sizeof("VERBOSE"));
    }
    Reset();
    handler_ = ::AddVectoredExceptionHandler(1 /*first*/, &OnException);
  }
  ~LogCapture() { ::RemoveVectoredExceptionHandler(handler_); }
  LogCapture(const LogCapture&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;

  static void Reset() {
    const std::lock_guard lock(Mutex());
    Store().clear();
  }

  // Called with each line on the thread that logs it, which stands still until it returns: so a
  // test holds a call at a known point.
  static std::atomic<void (*)(const char* line)>& Pause() {
    static std::atomic<void (*)(const char* line)> pause{nullptr};
    return pause;
  }

  // As they came, with the line break.
  static std::vector<std::string> RawLines() {
    const std::lock_guard lock(Mutex());
    return Store();
  }

  // Whole lines, "{thread} [time:LEVEL:(version) File.cpp(line)] message".
  static std::vector<std::string> Lines() {
    std::vector<std::string> lines = RawLines();
    for (std::string& line : lines) line.resize(line.find_last_not_of('\n') + 1);
    return lines;
  }

  // "LEVEL message" of each line of that level or above, in order: what tables compare. All
  // threads' lines, or those of one.
  static std::vector<std::string> Messages(const std::string& lowest = "ERROR", DWORD thread = 0) {
    static const std::vector<std::string> kLevels = {"VERBOSE1", "INFO", "WARNING", "ERROR",
                                                     "FATAL"};
    const auto rank = [](const std::string& level) {
      return std::find(kLevels.begin(), kLevels.end(), level) - kLevels.begin();
    };
    std::vector<std::string> result;
    for (const std::string& line : Lines()) {
      if (thread != 0 && !line.starts_with('{' + std::to_string(thread) + '}')) continue;
      const std::size_t levelStart = line.find(':') + 1;
      const std::string level = line.substr(levelStart, line.find(':', levelStart) - levelStart);
      const std::size_t messageStart = line.find(")] ") + 3;
      if (rank(level) >= rank(lowest)) result.push_back(level + " " + line.substr(messageStart));
    }
    return result;
  }

  static std::size_t Count(const std::string& message) {
    std::size_t count = 0;
    for (const std::string& line : Messages("VERBOSE1")) {
      if (line.substr(line.find(' ') + 1) == message) ++count;
    }
    return count;
  }

 private:
  static std::mutex& Mutex() {
    static std::mutex mutex;
    return mutex;
  }
  static std::vector<std::string>& Store() {
    static std::vector<std::string> lines;
    return lines;
  }

  static LONG CALLBACK OnException(EXCEPTION_POINTERS* pointers) {
    const EXCEPTION_RECORD& record = *pointers->ExceptionRecord;
    constexpr DWORD kDebuggerOutput = 0x40010006;
    if (record.ExceptionCode != kDebuggerOutput || record.NumberParameters < 2) {
      return EXCEPTION_CONTINUE_SEARCH;
    }
    // The test framework sends its failures the same way; they do not begin with a thread.
    if (const auto* text = reinterpret_cast<const char*>(record.ExceptionInformation[1]);
        *text == '{') {
      {
        const std::lock_guard lock(Mutex());
        Store().emplace_back(text);
      }
      if (const auto pause = Pause().load()) pause(text);
    }
    return EXCEPTION_CONTINUE_EXECUTION;
  }

  void* handler_ = nullptr;
};
