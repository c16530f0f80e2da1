// Runs in the client and in the broker. The log of the module. Each line has a level, and goes to
// the debugger output and to event tracing. Use the macros below: if a line is not logged, they
// only compare its level with cached levels, and do not evaluate the arguments. Any thread may log.
// Logging keeps the thread's last error.
#pragma once

#include "logging/LogLevel.h"

namespace logging {

constexpr const char* BareFileName(const char* path) {
  const char* name = path;
  for (; *path != '\0'; ++path) {
    if (*path == '/' || *path == '\\') name = path + 1;
  }
  return name;
}

// The source file, line number and level of a log call. Stores the file name without its folders.
// Compilers separate folders by slashes or by backslashes.
struct LogSite {
  constexpr LogSite(const char* path, int lineNumber, int levelNumber)
      : file(BareFileName(path)), line(lineNumber), level(levelNumber) {}

  const char* file;
  int line;
  int level;
};

// Writes one line. `format` follows the printf rules of Microsoft's runtime library. Wide text in a
// narrow format ("%ls", "%S") is converted to UTF-8. Messages are cut at 4095 bytes.
void WriteLog(const LogSite& site, const char* format, ...);

// Writes one line with a wide format, in which "%s" and "%ls" take wide text. Messages are cut at
// 4095 UTF-16 units and then converted to UTF-8.
void WriteLogW(const LogSite& site, const wchar_t* format, ...);

}  // namespace logging

#define TESSEL_LOG_TO(writer, logLevel, ...)                                \
  do {                                                                      \
    if (::logging::IsLogged(logLevel)) {                                    \
      constexpr ::logging::LogSite logSite(__FILE__, __LINE__, (logLevel)); \
      ::logging::writer(logSite, __VA_ARGS__);                              \
    }                                                                       \
  } while (false)

#define LOG_VERBOSE(...) TESSEL_LOG_TO(WriteLog, ::logging::kVerbose, __VA_ARGS__)
#define LOG_INFO(...) TESSEL_LOG_TO(WriteLog, ::logging::kInfo, __VA_ARGS__)
#define LOG_WARNING(...) TESSEL_LOG_TO(WriteLog, ::logging::kWarning, __VA_ARGS__)
#define LOG_ERROR(...) TESSEL_LOG_TO(WriteLog, ::logging::kError, __VA_ARGS__)
#define LOG_FATAL(...) TESSEL_LOG_TO(WriteLog, ::logging::kFatal, __VA_ARGS__)
#define LOG_INFO_W(...) TESSEL_LOG_TO(WriteLogW, ::logging::kInfo, __VA_ARGS__)
