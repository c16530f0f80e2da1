// Part of tessel and SceneBroker. A recording: the requests of clients and the answers of a broker.
// docs/recording.md describes the file.
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

namespace tools {

// Thrown if a recording cannot be read or written. The message says what is wrong, and how to
// correct it.
class RecordingError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct RecordingHeader {
  std::wstring address;
  std::string scheme;  // the name of the scheme
  std::wstring title;  // of the window; may be empty
};

struct Exchange {
  std::string time;  // when the request came, in UTC; empty if the exchange comes from a file
  std::wstring request;
  std::wstring answer;      // empty if the client got no answer
  double milliseconds = 0;  // how long the answer took; 0 if the exchange comes from a file
};

struct Recording {
  RecordingHeader header;           // line 1 of the file
  std::vector<Exchange> exchanges;  // the following lines
};

// The number of the line that holds the exchange with this index.
inline std::size_t LineNumber(std::size_t exchange) { return exchange + 2; }

// Leaves out the last line if it was cut short. Throws RecordingError if the file cannot be read or
// is not a recording. The message names the file and the line.
Recording ReadRecording(const std::wstring& path);

}  // namespace tools
