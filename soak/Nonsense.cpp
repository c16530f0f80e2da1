#include "Nonsense.h"

#include "SharedState.h"
#include "TesselSilverlight.h"
#include "tools/pipe/ServerPipe.h"

namespace soak {

namespace {

using tools::MessageOfText;

// A vector of this many elements needs 120 GB. The machine must have less memory, so that the
// allocation fails.
constexpr int kLargestCount = 2147483647;

// No text in these messages is the id of an element in a scene.
std::vector<Nonsense> MakeNonsense() {
  const std::wstring many(1 << 20, L'x'), deep(100, L'['), deepEnd(100, L']');
  const std::vector<Value> other = {{'i', 77}};
  return {
      // These bytes are not a message, not JSON, or not an array, or too much follows the array.
      {"", {}},
      {"[", {}},
      {MessageOfText(L"nonsense"), {}},
      {MessageOfText(L"{}"), {}},
      {MessageOfText(L"77"), {}},
      {MessageOfText(L"\xFEFF"), {}},
      {MessageOfText(L"[0,\"fre"), {}},
      {MessageOfText(L"[0]x") + "y", {}},
      {MessageOfText(L"[77]]]"), {}},
      {MessageOfText(L"[77,]"), {}},
      {MessageOfText(L"[0 0]"), {}},
      {MessageOfText(deep + deep + deep + deepEnd + deepEnd + deepEnd), {}},
      {MessageOfText(std::wstring(1 << 20, L'[')), {}},
      {MessageOfText(many + many), {}},
      // These arrays do not begin with a status.
      {MessageOfText(L"[]"), {}},
      {MessageOfText(L"[null]"), {{'?'}}},
      {MessageOfText(L"[\"0\"]"), {{'s'}}},
      {MessageOfText(L"[0.0]"), {{'?'}}},
      {MessageOfText(L"[4294967296]"), {{'?'}}},
      {MessageOfText(L"[[0]]"), {{'?'}}},
      // These arrays begin with the status 77, which is no success. A client ignores everything
      // else in these messages.
      {MessageOfText(L"[77]"), other},
      {MessageOfText(L"[77") + "]", other},
      {MessageOfText(L"[77]]"), other},  // one character after the array is accepted
      {MessageOfText(std::wstring(L"[77]\0[0]", 8)), other},
      {MessageOfText(L"/**/ [77, null]"), other},
      {MessageOfText(L"[77," + deep + deepEnd + L"]"), other},
      {MessageOfText(L"[77,\"" + many + many + L"\"]"), other},
      // These answers report success, with values that fit only some calls.
      {MessageOfText(L"[0]"), {{'i', 0}}},
      {MessageOfText(L"[0,0]"), {{'i', 0}, {'i', 0}}},
      {MessageOfText(L"[0,null]"), {{'i', 0}, {'?'}}},
      {MessageOfText(L"[0,true]"), {{'i', 0}, {'b', 1}}},
      {MessageOfText(L"[0,false]"), {{'i', 0}, {'b', 0}}},
      {MessageOfText(L"[0,\"fremd\"]"), {{'i', 0}, {'s'}}},
      {MessageOfText(L"[0,\"\xD800\"]"), {{'i', 0}, {'s'}}},
      {MessageOfText(L"[0,\"fre\\u0000md\"]"), {{'i', 0}, {'s'}}},
      {MessageOfText(L"[0,3,\"fremd\"]"), {{'i', 0}, {'i', 3}, {'s'}}},
      {MessageOfText(L"[0,1,\"fremd\",1,1]"), {{'i', 0}, {'i', 1}, {'s'}, {'i', 1}, {'i', 1}}},
      {MessageOfText(L"[0,1,2,3,4]"), {{'i', 0}, {'i', 1}, {'i', 2}, {'i', 3}, {'i', 4}}},
      {MessageOfText(L"[0,\"\",\"\",\"\",\"4\"]"), {{'i', 0}, {'s'}, {'s'}, {'s'}, {'s'}}},
      {MessageOfText(L"[0,1,\"" + many + L"\"]"), {{'i', 0}, {'i', 1}, {'s'}}},
      // These answers have counts that are negative, or too large for the memory.
      {MessageOfText(L"[0,-1]"), {{'i', 0}, {'i', -1}}},
      {MessageOfText(L"[0,-2147483648,\"fremd\"]"), {{'i', 0}, {'i', -2147483647 - 1}, {'s'}}},
      {MessageOfText(L"[0,2147483647]"), {{'i', 0}, {'i', kLargestCount}}},
      {MessageOfText(L"[0,2147483647,\"fremd\"]"), {{'i', 0}, {'i', kLargestCount}, {'s'}}},
  };
}

// Reads the values one by one, as a call does.
class Reader {
 public:
  explicit Reader(const std::vector<Value>& values) : values_(values) {}

  // Returns null if the array ends or if the next value has another type.
  const Value* Next(char type) {
    if (next_ == values_.size() || values_[next_].type != type) return nullptr;
    return &values_[next_++];
  }

 private:
  const std::vector<Value>& values_;
  std::size_t next_ = 0;
};

}  // namespace

const std::vector<Nonsense>& AllNonsense() {
  static const std::vector<Nonsense> all = MakeNonsense();
  return all;
}

const Nonsense& HugeCount() {
  static const Nonsense hugeCount = {"", {{'i', 0}, {'i', kLargestCount}}};
  return hugeCount;
}

bool BeginsWithCount(Layout layout) { return *layout == '*' || *layout == '#'; }

int OutcomeOf(const Nonsense& nonsense, Layout layout) {
  Reader reader(nonsense.values);
  const Value* const status = reader.Next('i');
  if (status == nullptr) return SL_ARCHIVE_FAILURE;
  if (status->number != SL_SUCCESS) return status->number;
  while (*layout != '\0') {
    int times = 1;
    if (BeginsWithCount(layout)) {
      const Value* const count = reader.Next('i');
      if (count == nullptr) return SL_ARCHIVE_FAILURE;
      times = count->number;
      if (*layout == '#' && times < 0) return kLengthError;
      if (*layout == '#' && times == kLargestCount) return kBadAlloc;
      ++layout;
    }
    Layout end = layout;
    while (*end != '\0' && *end != '*' && *end != '#') ++end;
    for (int i = 0; i < times; ++i) {
      for (Layout type = layout; type != end; ++type) {
        const Value* const value = reader.Next(*type);
        if (value == nullptr) return SL_ARCHIVE_FAILURE;
        if (*type == 'b' && value->number == 0) return SL_FAILURE;  // the release was refused
      }
    }
    layout = end;
  }
  return SL_SUCCESS;
}

}  // namespace soak
