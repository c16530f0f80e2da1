// tessel. Reads the texts of one element, its attributes and items, for a report or for the tree.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/inspector/Content.h"

std::string TextOf(const CComBSTR& text);

std::string ReadAttribute(const Content& content, const SLElemData& element,
                          const std::string& name);
std::vector<std::string> ReadItems(const Content& content, const SLElemData& element);

// Empty if the broker says that the element has no such attribute, or is no list.
std::optional<std::string> TryAttribute(const Content& content, const SLElemData& element,
                                        const std::string& name);
std::optional<std::vector<std::string>> TryItems(const Content& content, const SLElemData& element);
