// Part of tessel and SceneBroker. Writes a recording while a broker serves its clients.
#pragma once

#include <functional>
#include <string>

#include "tools/recording/Recording.h"
#include "tools/shared/Handle.h"

namespace tools {

// Call the functions on one thread. They throw RecordingError if the file cannot be written.
class Recorder {
 public:
  // Creates the file. Throws RecordingError if it exists or cannot be created.
  explicit Recorder(const std::wstring& path);

  // Writes the first line.
  void Begin(const RecordingHeader& header);

  // Passes the request to `answer`, writes the request and its answer as one line, and returns
  // both. Windows has the line before this function returns, so the line is in the file even if
  // this process then ends.
  Exchange Record(const std::wstring& request,
                  const std::function<std::wstring(const std::wstring&)>& answer);

  std::size_t Exchanges() const { return exchanges_; }

 private:
  void Write(const std::string& line);

  const std::string path_;
  const Handle file_;
  std::size_t exchanges_ = 0;
};

}  // namespace tools
