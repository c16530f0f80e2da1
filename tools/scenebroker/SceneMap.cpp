#include "tools/scenebroker/SceneMap.h"

#include <algorithm>
#include <utility>

namespace {

constexpr std::size_t kStripes = 32;

LONG Middle(LONG low, LONG high) {
  return static_cast<LONG>(low + (static_cast<long long>(high) - low) / 2);
}

bool IsEmpty(const RECT& rect) { return rect.left == rect.right || rect.top == rect.bottom; }

}  // namespace

SceneMap::SceneMap(const std::vector<SceneElement>& elements) {
  std::vector<LONG> xs, ys;
  for (const SceneElement& element : elements) {
    xs.insert(xs.end(), {element.rect.left, element.rect.right});
    ys.insert(ys.end(), {element.rect.top, element.rect.bottom});
  }
  columns_ = MakeAxis(std::move(xs));
  rows_ = MakeAxis(std::move(ys));
  cells_.resize((columns_.starts.size() + 1) * (rows_.starts.size() + 1));
  for (const SceneElement& element : elements) {
    if (!IsEmpty(element.rect)) Draw(element);
  }
}

SceneMap::Axis SceneMap::MakeAxis(std::vector<LONG> edges) {
  Axis axis;
  if (edges.empty()) return axis;
  std::ranges::sort(edges);
  for (std::size_t i = 0; i <= kStripes; ++i) {
    const LONG start = edges[i * (edges.size() - 1) / kStripes];
    if (axis.starts.empty() || axis.starts.back() != start) axis.starts.push_back(start);
  }
  return axis;
}

std::size_t SceneMap::Axis::StripeOf(LONG value) const {
  return static_cast<std::size_t>(std::ranges::upper_bound(starts, value) - starts.begin());
}

bool SceneMap::Axis::IsWithin(std::size_t stripe, LONG low, LONG high) const {
  return stripe > 0 && stripe < starts.size() && low <= starts[stripe - 1] &&
         starts[stripe] <= high;
}

void SceneMap::Draw(const SceneElement& element) {
  const RECT& rect = element.rect;
  const std::size_t lastRow = rows_.StripeOf(rect.bottom - 1);
  const std::size_t lastColumn = columns_.StripeOf(rect.right - 1);
  for (std::size_t row = rows_.StripeOf(rect.top); row <= lastRow; ++row) {
    for (std::size_t column = columns_.StripeOf(rect.left); column <= lastColumn; ++column) {
      auto& cell = cells_[row * (columns_.starts.size() + 1) + column];
      const bool hidesCell = rows_.IsWithin(row, rect.top, rect.bottom) &&
                             columns_.IsWithin(column, rect.left, rect.right);
      if (hidesCell) cell.clear();
      cell.push_back(&element);
    }
  }
}

const SceneElement* SceneMap::At(POINT point) const {
  const auto& cell =
      cells_[rows_.StripeOf(point.y) * (columns_.starts.size() + 1) + columns_.StripeOf(point.x)];
  const auto found = std::find_if(cell.rbegin(), cell.rend(), [&](const SceneElement* element) {
    return element->Contains(point);
  });
  return found == cell.rend() ? nullptr : *found;
}

POINT SceneMap::PointOf(const SceneElement& element) const {
  const RECT& rect = element.rect;
  const POINT centre = {Middle(rect.left, rect.right), Middle(rect.top, rect.bottom)};
  if (IsEmpty(rect)) return centre;
  const POINT points[] = {centre,
                          {rect.left, rect.top},
                          {rect.right - 1, rect.top},
                          {rect.left, rect.bottom - 1},
                          {rect.right - 1, rect.bottom - 1}};
  const auto found = std::find_if(std::begin(points), std::end(points),
                                  [&](POINT point) { return At(point) == &element; });
  return found == std::end(points) ? centre : *found;
}
