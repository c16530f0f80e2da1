// tessel. The commands that act on an element.
#pragma once

#include "tools/inspector/Content.h"
#include "tools/inspector/Report.h"

Report Click(const Content& content);
Report SetText(const Content& content);
Report GiveFocus(const Content& content);
Report Check(const Content& content);
Report Select(const Content& content);
