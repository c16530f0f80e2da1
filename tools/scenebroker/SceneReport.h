// Part of SceneBroker. Prints lines for the user to standard output. May be called from any thread.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>
#include <vector>

#include "tools/faults/FaultRule.h"
#include "tools/scenebroker/Replay.h"
#include "tools/scenebroker/ServedScene.h"

// Prints the facts that clients need to find the scene's content, then facts about each element,
// and then the line "ready". `scheme` is the name of the scheme.
void PrintFacts(const ServedScene& served, const std::string& scheme, HWND window,
                const std::vector<HWND>& noticeWindows);
void PrintSeed(unsigned seed);
// The request is empty if the fault happened before the request was read.
void PrintFault(const tools::FaultRule& rule, const std::wstring& request);
void PrintServed(std::string_view request, std::string_view answer);
void PrintNotice(int window, int command);
void PrintSummary(const HeldObjects& objects);

// These functions are for a recording that is replayed.
void PrintReplayFacts(const tools::Recording& recording, HWND window);
void PrintDeviation(const Replay::Deviation& deviation);
void PrintReplaySummary(const Replay& replay);
