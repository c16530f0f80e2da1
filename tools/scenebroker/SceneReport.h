// Part of SceneBroker. Prints lines for the user to standard output. May be called from any thread.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>
#include <vector>

#include "tools/scenebroker/ServedScene.h"

// Prints what clients need to find the content, and the elements. `scheme` is the scheme's name.
void PrintFacts(const ServedScene& served, const std::string& scheme, HWND window,
                const std::vector<HWND>& noticeWindows);
void PrintServed(std::string_view request, std::string_view answer);
void PrintNotice(int window, int command);
void PrintSummary(const HeldObjects& objects);
