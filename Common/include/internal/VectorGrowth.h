// Client process. The growth rule of the vectors that cross the interface, which is not every
// standard library's own.
#pragma once

#include <algorithm>
#include <utility>

template <class Vector>
void AppendGrowing(Vector& vector, typename Vector::value_type&& value) {
  if (vector.size() == vector.capacity()) {
    const auto capacity = vector.capacity();
    vector.reserve(std::max(capacity + capacity / 2, vector.size() + 1));
  }
  vector.push_back(std::move(value));
}
