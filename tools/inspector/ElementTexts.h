// tessel. Reads the attributes and items of one element.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/inspector/Content.h"

std::string TextOf(const CComBSTR& text);

std::string ReadAttribute(const Content& content, const SLElemData& element,
                          const std::string& name);
std::vector<std::string> ReadItems(const Content& content, const SLElemData& element);

// Return no value if the broker answers that the element has no such attribute or is not a list.
std::optional<std::string> TryAttribute(const Content& content, const SLElemData& element,
                                        const std::string& name);
std::optional<std::vector<std::string>> TryItems(const Content& content, const SLElemData& element);
