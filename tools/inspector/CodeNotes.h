// Part of tessel. What `tessel explain` says about a result code besides its meaning and cure,
// which are in the tables of codes.
#pragma once

#include <string>
#include <vector>

struct CodeNotes {
  std::vector<std::string> causes;    // the usual causes; empty if the code's meaning is enough
  std::vector<std::string> logLines;  // "LEVEL TEXT"; the text as in the module's sources
};

// `name` is the name of a code. Returns empty notes if there is nothing more to say about the code.
CodeNotes NotesFor(const std::string& name);
