// Part of tessel. Finds the names that are most similar to a mistyped one.
#pragma once

#include <string>
#include <vector>

// Returns at most `most` of the candidates, the most similar ones first. A candidate is similar if
// few letters differ, or if one of the two texts contains the other. Ignores case.
std::vector<std::string> Nearest(const std::string& text,
                                 const std::vector<std::string>& candidates, std::size_t most);

// Returns "did you mean 'NAME'?" with the most similar candidate. Returns an empty text if no
// candidate is similar.
std::string DidYouMean(const std::string& text, const std::vector<std::string>& candidates);
