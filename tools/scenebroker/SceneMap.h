// Part of SceneBroker. Finds the element at a point, and a point at which an element is found.
#pragma once

#include <vector>

#include "tools/scenebroker/Scene.h"

// A grid of cells. Each cell lists the elements that may be visible in it, which makes look-ups in
// a large scene fast. The grid keeps pointers to the elements, so they must exist as long as the
// grid.
class SceneMap {
 public:
  explicit SceneMap(const std::vector<SceneElement>& elements);

  // Of the elements that contain the point, returns the element that was drawn last, or null if no
  // element contains the point.
  const SceneElement* At(POINT point) const;

  // Returns the centre of the element if At() finds the element there. Otherwise returns a corner
  // where At() finds it. If other elements cover all of these points, returns the centre.
  POINT PointOf(const SceneElement& element) const;

 private:
  // All columns or all rows of the grid. A stripe is one column or one row. Stripes start at edges
  // of elements, so they are narrow where there are many elements.
  struct Axis {
    // Returns the number of the stripe (column or row) that contains the coordinate `value`.
    std::size_t StripeOf(LONG value) const;
    // Returns whether the column or row with the number `stripe` lies completely between the
    // coordinates `low` and `high`.
    bool IsWithin(std::size_t stripe, LONG low, LONG high) const;

    // Column or row 0 is everything before starts[0]. Column or row i+1 begins at starts[i].
    std::vector<LONG> starts;
  };
  static Axis MakeAxis(std::vector<LONG> edges);

  void Draw(const SceneElement& element);

  Axis columns_;
  Axis rows_;
  // The cells row by row. In each cell the elements are in drawing order.
  std::vector<std::vector<const SceneElement*>> cells_;
};
