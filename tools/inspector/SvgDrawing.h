// Part of tessel. Draws elements as an SVG picture.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

struct DrawnElement {
  std::string id;
  std::string name;  // empty if the element has no name
  RECT rect = {};
  bool hasFocus = false;
};

// Draws the elements in their order, so that later elements cover earlier ones. All texts are
// UTF-8 and may hold any character.
std::string DrawSvg(const std::string& title, const std::vector<DrawnElement>& elements);
