// Runs in the client. Lets the vectors in the interface grow by the same rule with every standard
// library.
#pragma once

#include <algorithm>
#include <utility>

// Appends `value`. A full vector grows by half of its capacity.
template <class Vector>
void AppendGrowing(Vector& vector, typename Vector::value_type&& value) {
  if (vector.size() == vector.capacity()) {
    const auto capacity = vector.capacity();
    vector.reserve(std::max(capacity + capacity / 2, vector.size() + 1));
  }
  vector.push_back(std::move(value));
}
