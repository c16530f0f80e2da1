#include "json/JsonReader.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "json/JsonGrammar.h"

namespace base {

namespace {

// After it has read n units of text, the reader estimates how much space the values in the rest of
// the text need. The estimate covers at most the next 512 * n units.
constexpr std::size_t kMaxEstimate = 512;

// Reads a complete text. To reserve enough room for any text of its length would cost more than to
// read the text. So the reader divides the text of the outer list into pieces, called steps. Before
// each step it reserves enough room for any text of the step's length.
template <class Unit>
class DocumentReader {
 public:
  DocumentReader(std::basic_string_view<Unit> text, ListValue& values, std::size_t step)
      : start_(text.data()),
        limit_(start_ + text.size()),
        step_(step),
        values_(values),
        in_{start_, limit_},
        out_(values, std::min(text.size(), step)) {}

  std::optional<ValueType> Read() {
    in_.SkipByteOrderMark();
    in_.SkipGap();
    const bool isList = in_.Peek() == '[';
    if (!(isList ? ReadOuterList() : ReadOtherValue())) return std::nullopt;
    in_.SkipGap();
    if (!IsAtEnd()) return std::nullopt;
    out_.Finish();
    return isList ? ValueType::kList : values_.At(0).type();
  }

 private:
  bool ReadOtherValue() {
    out_.MakeRoom(in_.Left());
    return grammar_.ReadValue(0 /*depth*/);
  }

  bool ReadOuterList() {
    ++in_.at;
    in_.SkipGap();
    if (in_.Accept(']')) return true;
    EndStepWithRoom();
    do {
      while (!ReadElementsInStep()) {
        if (!StartStep()) return false;
      }
    } while (in_.Accept(','));
    in_.end = limit_;
    return in_.Accept(']');
  }

  // Reads one or more elements of the outer list. Reads only inside the current step, which is the
  // piece of text for which the output has room. Returns true if a comma or closing bracket comes
  // after the elements. Otherwise the text is not valid or the step ends too early: then returns
  // false, and restores the positions in the text and in the output.
  bool ReadElementsInStep() {
    const Unit* const at = in_.at;
    char* const to = out_.to();
    if (grammar_.ReadListElements(1 /*depth*/)) {
      in_.SkipGap();
      if (in_.Peek() == ',' || in_.Peek() == ']') return true;
    }
    in_.at = at;
    out_.MoveTo(to);
    return false;
  }

  // Starts a new step (a piece of text for which the output has room) at the current position.
  // Makes room for the next `step_` units of text. If one element was too long for a step of this
  // length, makes room for the whole rest of the text. Returns false if the previous step already
  // reached the end of the text.
  bool StartStep() {
    if (in_.end == limit_) return false;
    const std::size_t rest = limit_ - in_.at;
    if (in_.Left() >= step_) step_ = rest;
    const std::size_t step = std::min(step_, rest);
    if (!out_.HasRoom(step)) out_.MakeRoom(step, EstimateSize(rest - step));
    EndStepWithRoom();
    return true;
  }

  // Makes the current step as long as the room in the output allows. The step never goes beyond the
  // end of the text.
  void EndStepWithRoom() {
    in_.end = in_.at + std::min<std::size_t>(limit_ - in_.at, out_.UnitsWithRoom());
  }

  // Estimates the size of the values in the next `units` units of text. Assumes that the text
  // continues like the text read so far, and adds 1/32.
  std::size_t EstimateSize(std::size_t units) const {
    const auto read = static_cast<std::size_t>(in_.at - start_);
    units = std::min(units, kMaxEstimate * read);
    units += units / 32;
    return static_cast<std::size_t>(static_cast<double>(out_.size()) / static_cast<double>(read) *
                                    static_cast<double>(units));
  }

  // Returns true if no text is left. One last unit is ignored if it is a byte, or an ASCII unit of
  // UTF-16.
  bool IsAtEnd() const {
    return in_.Left() == 0 || (in_.Left() == 1 && (sizeof(Unit) == 1 || IsAscii(*in_.at)));
  }

  const Unit* const start_;
  const Unit* const limit_;  // the end of the text; `in_.end` is the end of the step
  std::size_t step_;         // the length of a step, in units of text
  ListValue& values_;
  TextInput<Unit> in_;
  PackedOutput out_;
  JsonGrammar<Unit> grammar_{in_, out_};
};

}  // namespace

std::optional<ValueType> ReadJson(std::string_view utf8, ListValue& values, std::size_t step) {
  return DocumentReader<char>(utf8, values, step).Read();
}

std::optional<ValueType> ReadJson(Utf16View text, ListValue& values, std::size_t step) {
  return DocumentReader<Utf16Unit>(text, values, step).Read();
}

}  // namespace base
