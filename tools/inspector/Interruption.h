// Part of tessel. What happens on Ctrl-C while the tool makes calls.
#pragma once

// From now on, Ctrl-C ends the tool at once with exit code 130. The tool then does not release the
// elements that it holds. A message on standard error says so: as text, or as JSON if `json` is
// true.
void EndAtOnceOnCtrlC(bool json);
