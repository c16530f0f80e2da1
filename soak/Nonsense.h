// Runs in the conductor and in the client. The answers of a hostile broker, and the code that each
// call must return for them.
#pragma once

#include <string>
#include <vector>

namespace soak {

// One value of an array. The type is 'i' for an int, 'b' for a bool, 's' for a text, and '?' for
// anything else.
struct Value {
  char type;
  int number = 0;  // of an int or a bool
};

struct Nonsense {
  std::string bytes;          // the message
  std::vector<Value> values;  // the array that a reader finds in it; empty if it finds none
};

const std::vector<Nonsense>& AllNonsense();

// Returns the bytes of a message that consists of this text.
std::string MessageOf(const std::wstring& text);

// The values of an answer after its status. 'i', 'b' and 's' are values as above. '*' and '#' stand
// for a count: the values up to the next '*', '#' or the end are repeated that many times. For '#'
// the client first allocates a vector of that size.
using Layout = const char*;

// Returns the code of the call, or kBadAlloc or kLengthError for an exception.
int OutcomeOf(const Nonsense& nonsense, Layout layout);

}  // namespace soak
