// Part of SceneBroker. Finds the element at a point, and a point at which an element is found.
#pragma once

#include <vector>

#include "tools/scenebroker/Scene.h"

// A grid of cells, each with the elements that may be visible in it. It makes look-ups in a large
// scene fast. It keeps pointers to the elements.
class SceneMap {
 public:
  explicit SceneMap(const std::vector<SceneElement>& elements);

  // Returns the element that was drawn last of those that contain the point, or null.
  const SceneElement* At(POINT point) const;

  // Returns the centre of the element if At finds the element there, otherwise a corner at which it
  // does. If the corners are covered too, returns the centre.
  POINT PointOf(const SceneElement& element) const;

 private:
  // The columns or the rows of the grid. They start at edges of elements, so they are narrow where
  // there are many elements.
  struct Axis {
    std::size_t StripeOf(LONG value) const;
    bool IsWithin(std::size_t stripe, LONG low, LONG high) const;

    std::vector<LONG> starts;  // stripe 0 ends at starts[0]; the last stripe has no end
  };
  static Axis MakeAxis(std::vector<LONG> edges);

  void Draw(const SceneElement& element);

  Axis columns_;
  Axis rows_;
  std::vector<std::vector<const SceneElement*>> cells_;  // row by row; elements in drawing order
};
