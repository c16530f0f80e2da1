// Runs in the conductor (soak_conductor) and in the client (soak_client). The broken answers that a
// hostile broker sends (nonsense), and the code that each call must return for them.
#pragma once

#include <string>
#include <vector>

namespace soak {

// One value of the array that an answer consists of. The type is 'i' for an int, 'b' for a bool,
// 's' for a text, and '?' for anything else.
struct Value {
  char type;
  int number = 0;  // the value of an int or a bool
};

struct Nonsense {
  std::string bytes;  // the bytes of the message
  // The elements of the array that a client reads from `bytes`. There are none if `bytes` is not a
  // message with an array.
  std::vector<Value> values;
};

const std::vector<Nonsense>& AllNonsense();

// The answer of a broker with the fault "huge-count". Only `values` is set.
const Nonsense& HugeCount();

// Describes the values that follow the status in an answer. The letters 'i', 'b' and 's' are types
// as in Value. '*' and '#' are counts, which are ints. A count says how many times the values after
// it come, up to the next count or the end. So "#s*i" is a count n, then n texts, a count m, and
// then m ints. For '#' the client first allocates a vector of n elements, which fails if n is too
// large.
using Layout = const char*;

// Returns whether the first value after the status is a count.
bool BeginsWithCount(Layout layout);

// Returns the code that a call must return if `nonsense` is its answer and `layout` is the layout
// of a right answer. Returns kBadAlloc or kLengthError if the call must throw this exception.
int OutcomeOf(const Nonsense& nonsense, Layout layout);

}  // namespace soak
