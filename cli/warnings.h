// Warnings the command-line host shows an engineer: what the engine found while reading
// and checking the model (a comma read as a separator, values dropped, a method that
// misleads on this model), and whatever the host finds itself after a run. They are
// printed before a run, listed again at the end of its summary, and never change the
// exit status; --no-warnings silences them.
#pragma once

#include <string>
#include <vector>

#include "console.h"

namespace quellon_cli {

struct Warning {
  std::string code;   // stable short name, e.g. "short-elements"
  std::string where;  // "MODEL.tmw:57" for a line of the model file, else empty
  std::string text;   // names the pile, layer, element or token concerned
};

// An error that the engine found about the model: where it is and what.
struct Finding {
  std::string code;
  std::string where;
  std::string text;
};

struct EngineFindings {
  std::vector<Warning> warnings;
  std::vector<Finding> errors;
};

// The findings the engine holds now (of its last read and last check). model is the
// path of the model file, used to name lines.
EngineFindings TakeEngineFindings(const std::string& model);

// Each warning on its own line: "warning: WHERE: text [code]".
void PrintWarnings(Console& c, const std::vector<Warning>& warnings);
// The list again, under a heading with the count, for the end of a summary.
void PrintWarningSummary(Console& c, const std::vector<Warning>& warnings);

}  // namespace quellon_cli
