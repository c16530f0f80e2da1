// What a hostile broker may answer, and how each call has to end after it.
#pragma once

#include <string>
#include <vector>

namespace soak {

// One value of an array: 'i' an int, 'b' a bool, 's' a text, '?' anything else.
struct Value {
  char type;
  int number = 0;  // of an int or a bool
};

struct Nonsense {
  std::string bytes;          // of the message
  std::vector<Value> values;  // of the array that a reader may find in it; none: there is no array
};

const std::vector<Nonsense>& AllNonsense();

// The bytes of a text as a message.
std::string MessageOf(const std::wstring& text);

// The values of an answer behind its status: 'i', 'b' and 's' as above; behind '*' stands what a
// count says how often to read, one after the other; behind '#' what is read into a vector made for
// that count at once. Each of the two reaches up to the next of them.
using Layout = const char*;

// The code, or kBadAlloc, or kLengthError.
int OutcomeOf(const Nonsense& nonsense, Layout layout);

}  // namespace soak
