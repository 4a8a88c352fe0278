// The engine's check of a model that has just been read, as `quellon check` and
// `quellon run` use it: whether a run would accept the model, and the findings about it.
#pragma once

#include <string>

#include "console.h"
#include "warnings.h"

namespace quellon_cli {

struct ModelReview {
  bool accepted = true;   // a run would not refuse the model
  EngineFindings findings;
};

// Runs the engine's pre-run check on the model in hand (read from the file model),
// which neither consumes the model nor writes to any file, and collects the findings of
// the read and of the check.
ModelReview ReviewModel(const std::string& model);

// The errors of the findings, one a line: "WHERE: text", WHERE being the model file and
// line, or the model file alone.
void PrintErrors(Console& c, const std::string& model, const std::vector<Finding>& errors);

}  // namespace quellon_cli
