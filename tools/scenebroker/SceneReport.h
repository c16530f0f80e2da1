// SceneBroker. What it tells its user on standard output, line by line; from any thread.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>
#include <vector>

#include "tools/scenebroker/ServedScene.h"

// All that clients need, and what there is to ask for; `scheme` by its name.
void PrintFacts(const ServedScene& served, const std::string& scheme, HWND window,
                const std::vector<HWND>& noticeWindows);
void PrintServed(std::string_view request, std::string_view answer);
void PrintNotice(int window, int command);
void PrintSummary(const HeldObjects& objects);
