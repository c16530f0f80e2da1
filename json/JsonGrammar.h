// Runs in the client and in the broker. The grammar of JSON values, one function for each rule.
#pragma once

#include <vector>

#include "json/MemberOrder.h"
#include "json/PackedOutput.h"
#include "json/ReadNumber.h"
#include "json/ReadString.h"
#include "json/TextInput.h"

namespace base {

constexpr int kMaxDepth = 199;

// Each function reads text from `in` as its rule says and appends the values to `out`. The caller
// must have made room in `out` for the values of the whole text. The functions return false if the
// text does not follow the rule or ends too early. The positions in `in` and `out` are then
// undefined. `depth` is the number of open brackets.
//
// In the rules, `gap` is white space and comments, or nothing. `short-integer` is an integer of at
// most eight digits without a sign. ReadString.h has the rule for `string`, ReadNumber.h the rule
// for `number`.
template <class Unit>
class JsonGrammar {
 public:
  JsonGrammar(TextInput<Unit>& in, PackedOutput& out) : in_(in), out_(out) {}

  // value = string | list | dictionary | 'true' | 'false' | 'null' | number
  bool ReadValue(int depth) {
    switch (in_.Peek()) {
      case '"':
        return ReadString(in_, out_);
      case '[':
        return ReadList(depth);
      case '{':
        return ReadDictionary(depth);
      case 't':
        out_.Put(ValueType::kBoolean, packed::Flag{true});
        return in_.AcceptWord("true");
      case 'f':
        out_.Put(ValueType::kBoolean, packed::Flag{false});
        return in_.AcceptWord("false");
      case 'n':
        out_.PutType(ValueType::kNull);
        return in_.AcceptWord("null");
      default:
        return ReadNumber(in_, out_);
    }
  }

  // elements = { short-integer ',' } gap value
  // Reads one or more elements of a list. A short integer has one to eight digits and no sign.
  bool ReadListElements(int depth) {
    ReadShortInts(in_, out_);
    in_.SkipGap();
    return ReadValue(depth);
  }

 private:
  // list = '[' gap [ elements gap { ',' elements gap } ] ']'
  bool ReadList(int depth) {
    out_.PutType(ValueType::kList);
    const auto readElements = [this, depth] { return ReadListElements(depth + 1); };
    if (!ReadBracketed(depth, ']', readElements)) return false;
    out_.PutType(ValueType::kEnd);
    return true;
  }

  // dictionary = '{' gap [ member gap { ',' member gap } ] '}'
  bool ReadDictionary(int depth) {
    out_.PutType(ValueType::kDictionary);
    std::vector<char*> members;
    const auto readMember = [this, depth, &members] {
      members.push_back(out_.to());
      return ReadMember(depth + 1);
    };
    if (!ReadBracketed(depth, '}', readMember)) return false;
    out_.MoveTo(SortMembers(members, out_.to()));
    out_.PutType(ValueType::kEnd);
    return true;
  }

  // member = gap string gap ':' gap value
  bool ReadMember(int depth) {
    in_.SkipGap();
    if (!ReadString(in_, out_)) return false;
    in_.SkipGap();
    if (!in_.Accept(':')) return false;
    in_.SkipGap();
    return ReadValue(depth);
  }

  // Reads from the opening bracket to the closing bracket `close`, including both brackets.
  template <class ReadItem>
  bool ReadBracketed(int depth, char close, ReadItem readItem) {
    if (depth == kMaxDepth) return false;
    ++in_.at;
    in_.SkipGap();
    if (in_.Accept(close)) return true;
    do {
      if (!readItem()) return false;
      in_.SkipGap();
    } while (in_.Accept(','));
    return in_.Accept(close);
  }

  TextInput<Unit>& in_;
  PackedOutput& out_;
};

}  // namespace base
