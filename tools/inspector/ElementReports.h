// tessel. The commands that find elements and read from them.
#pragma once

#include "tools/inspector/Content.h"
#include "tools/inspector/Report.h"

Report ReportElement(const Content& content);
Report ReportParent(const Content& content);
Report ReportAncestors(const Content& content);
Report ReportSelector(const Content& content);
Report ReportFound(const Content& content);
Report ReportIdentity(const Content& content);
Report ReportAttribute(const Content& content);
Report ReportItems(const Content& content);
Report ReportRectangle(const Content& content);
