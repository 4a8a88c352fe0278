// The load cases of the model: named sets of cap loads worked after the run's own
// increment, the path of the document they are written to, and the host's function
// that receives each case's results.
#pragma once

#include <string>
#include <vector>

#include "engine/model.h"
#include "engine/text_file.h"
#include "quellon.h"

namespace quellon {

struct LoadCase {
  std::string name;
  Actions loads;  // the loads and their point, in one increment
};

struct LoadCaseSet {
  std::vector<LoadCase> cases;  // in the order added
  std::string xml_path;         // the cases document; empty: not set
  TextFile document;            // open from the start of a run with cases to its end
  Logical flags[kFlagCount] = {};  // the project's flags as the run started
  // Survives every reset, as the run's other callbacks.
  QuellonLoadCaseFn callback = nullptr;
};

// The cases and the path go with the model at the end of a run; the callback stays.
inline void ResetLoadCases(LoadCaseSet& s) {
  std::vector<LoadCase>().swap(s.cases);
  s.xml_path.clear();
  s.document.close();
}

}  // namespace quellon
