// Runs in the conductor and in the client. Answers of a hostile broker (nonsense), and the code
// that each call must return for them.
#pragma once

#include <string>
#include <vector>

namespace soak {

// One value of an array. The type is 'i' for an int, 'b' for a bool, 's' for a text, and '?' for
// anything else.
struct Value {
  char type;
  int number = 0;  // the value of an int or a bool
};

struct Nonsense {
  std::string bytes;  // the bytes of the message
  // The array that a reader finds in these bytes; empty if it finds no array.
  std::vector<Value> values;
};

const std::vector<Nonsense>& AllNonsense();

// Returns the bytes of a message that consists of this text.
std::string MessageOf(const std::wstring& text);

// Describes the values of an answer after its status. The letters 'i', 'b' and 's' are types as in
// Value. '*' and '#' are counts: the values up to the next count, or up to the end, occur that many
// times. For '#' the client first allocates a vector of that size.
using Layout = const char*;

// Returns the code of a call that receives `nonsense`, or kBadAlloc or kLengthError for an
// exception.
int OutcomeOf(const Nonsense& nonsense, Layout layout);

}  // namespace soak
