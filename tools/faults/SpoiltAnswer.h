// Part of SceneBroker and the endurance programs. The answers of a broker that misbehaves.
#pragma once

#include "tools/faults/FaultRule.h"

namespace tools {

// Returns the text that a broker with this fault sends in place of `answer`, which must be a right
// answer. Returns `answer` itself if the fault does not change answers.
std::wstring SpoiltAnswer(const FaultRule& fault, const std::wstring& answer);

}  // namespace tools
