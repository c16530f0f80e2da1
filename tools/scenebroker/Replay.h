// Part of SceneBroker. Answers the requests of clients from a recording.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tools/recording/Recording.h"

// The requests must come in the order of the recording. Process ids may differ. Releases may come
// at any time, because the moment at which a client releases an element often depends on the client
// and not on the conversation.
class Replay {
 public:
  // A request that differs from the recording. `expected` is the recorded request, `actual` is the
  // client's. Both have "?" in place of the process id.
  struct Deviation {
    std::size_t line = 0;                  // of the recording
    std::optional<std::wstring> expected;  // nothing if the recording has no further request
    std::wstring actual;
  };

  explicit Replay(const std::vector<tools::Exchange>& exchanges);

  // Returns the answer. Returns an empty text if the recorded client got no answer. After the first
  // deviation, the answer to every request that is not a release is the status kNotRecorded.
  std::wstring Answer(const std::wstring& request);

  const std::optional<Deviation>& FirstDeviation() const { return deviation_; }

  // The number of recorded requests that clients have sent in their order, and the number of those
  // that they have not sent. Releases do not count.
  std::size_t Replayed() const { return next_; }
  std::size_t Left() const { return steps_.size() - 1 - next_; }

 private:
  struct Step {
    std::size_t line = 0;
    std::optional<std::wstring> request;  // nothing in the last step
    std::wstring answer;
  };
  std::wstring AnswerRelease(const std::wstring& request);

  std::vector<Step> steps_;  // the last step marks the end of the recording
  std::size_t next_ = 0;
  std::multimap<std::wstring, std::wstring> releases_;  // request without process id, and answer
  std::optional<Deviation> deviation_;
};
