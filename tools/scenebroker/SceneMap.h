// SceneBroker. Where the elements of a scene are found: what lies at a point, and at which point an
// element can be met.
#pragma once

#include <vector>

#include "tools/scenebroker/Scene.h"

// A grid, so that a scene of many elements costs little per point. The elements have to stay where
// they are.
class SceneMap {
 public:
  explicit SceneMap(const std::vector<SceneElement>& elements);

  // The last drawn of those that contain the point. Null when there is none.
  const SceneElement* At(POINT point) const;

  // Its centre, or a corner if that is covered; the centre again if the corners are covered too.
  POINT PointOf(const SceneElement& element) const;

 private:
  // One of the grid's two directions, in stripes that begin at the edges of elements; so crowded
  // places get narrow ones.
  struct Axis {
    std::size_t StripeOf(LONG value) const;
    bool IsWithin(std::size_t stripe, LONG low, LONG high) const;

    std::vector<LONG> starts;  // the stripe before the first one is endless, the last one too
  };
  static Axis MakeAxis(std::vector<LONG> edges);

  void Draw(const SceneElement& element);

  Axis columns_;
  Axis rows_;
  std::vector<std::vector<const SceneElement*>> cells_;  // row by row; each in drawing order
};
