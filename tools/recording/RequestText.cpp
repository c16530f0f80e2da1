#include "tools/recording/RequestText.h"

#include <cstdint>
#include <string_view>

namespace tools {
namespace {

constexpr std::wstring_view kBlanks = L" \t\r\n";

// The first two numbers of a request, and the place of the process id in the request's text.
struct Start {
  std::int64_t command = 0, process = 0;
  std::size_t processBegin = 0, processEnd = 0;
};

class StartReader {
 public:
  explicit StartReader(std::wstring_view text) : text_(text) {}

  std::optional<Start> Read() {
    Start start;
    if (!Skip(L'[') || !ReadInteger(start.command) || !Skip(L',')) return std::nullopt;
    SkipBlanks();
    start.processBegin = at_;
    if (!ReadInteger(start.process)) return std::nullopt;
    start.processEnd = at_;
    return Skip(L',') || Skip(L']') ? std::optional(start) : std::nullopt;
  }

 private:
  void SkipBlanks() {
    while (at_ < text_.size() && kBlanks.find(text_[at_]) != kBlanks.npos) ++at_;
  }

  bool Skip(wchar_t unit) {
    SkipBlanks();
    if (at_ == text_.size() || text_[at_] != unit) return false;
    ++at_;
    return true;
  }

  // Reads a number of at most ten digits, so that it fits into `number`.
  bool ReadInteger(std::int64_t& number) {
    SkipBlanks();
    const bool isNegative = at_ < text_.size() && text_[at_] == L'-';
    if (isNegative) ++at_;
    const std::size_t begin = at_;
    for (; at_ < text_.size() && text_[at_] >= L'0' && text_[at_] <= L'9'; ++at_) {
      if (at_ - begin == 10) return false;
      number = number * 10 + (text_[at_] - L'0');
    }
    if (isNegative) number = -number;
    return at_ > begin;
  }

  const std::wstring_view text_;
  std::size_t at_ = 0;
};

}  // namespace

std::optional<int> CommandOf(const std::wstring& request) {
  const std::optional<Start> start = StartReader(request).Read();
  if (!start || start->command != static_cast<int>(start->command)) return std::nullopt;
  return static_cast<int>(start->command);
}

std::optional<unsigned long> ProcessOf(const std::wstring& request) {
  const std::optional<Start> start = StartReader(request).Read();
  if (!start) return std::nullopt;
  return static_cast<unsigned long>(start->process);
}

std::wstring WithoutProcess(const std::wstring& request) {
  const std::optional<Start> start = StartReader(request).Read();
  if (!start) return request;
  return request.substr(0, start->processBegin) + L'?' + request.substr(start->processEnd);
}

}  // namespace tools
