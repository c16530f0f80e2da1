// Runs in the client and in the broker. The numbers of the commands. The first value of each
// request is the number of its command.
#pragma once

namespace wire {

enum class Command : int {
  kElementFromPoint = 1,
  kRectangle = 2,
  kRelease = 3,
  kParent = 6,
  kIdentity = 7,
  kSelector = 8,
  kCollection = 9,
  kAttribute = 10,
  kClick = 11,
  kSetValue = 12,
  kSetFocus = 13,
  kFocusedElement = 14,
  kCheck = 15,
  kItems = 16,
  kSelectItem = 17,
  kAncestry = 18,
};

}  // namespace wire
