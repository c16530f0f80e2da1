// Reads a document as element calls do: each value once and in order. The kind of each value, an
// int or a text, is known before.
#pragma once

#include "Harness.h"
#include "Workloads.h"

namespace bench {

template <class Document>
void ReadOut(TextView text, const std::vector<Kind>& kinds) {
  Document document(text);
  std::size_t sum = 0;
  for (const Kind kind : kinds) {
    if (kind == Kind::kInt) {
      sum += static_cast<std::size_t>(document.Int());
    } else {
      const HandedOut handed = document.String();
      sum += LengthOf(handed) + UnitsOf(handed)[0];
    }
  }
  sink = sink + sum;
}

template <class Document>
Values CollectValues(TextView text, const std::vector<Kind>& kinds) {
  Document document(text);
  Values values;
  for (const Kind kind : kinds) {
    if (kind == Kind::kInt) {
      values.push_back({kind, document.Int(), {}});
    } else {
      const HandedOut handed = document.String();
      values.push_back({kind, 0, Text(UnitsOf(handed), LengthOf(handed))});
    }
  }
  return values;
}

}  // namespace bench
