// Findings about a model that a host shows its user beside the engine's messages: what
// the text model reader noticed on the side (numbers it read differently from how they
// look, values it dropped, where a failed read went out of step with the file) and what
// the model check found (a fault that a run would refuse, and places where the method
// gives misleading numbers). They never change what the engine computes or writes; a
// host reads them through QuellonGetDiagnostic.
#pragma once

#include <string>
#include <vector>

namespace quellon {

struct Diagnostic {
  int severity = 1;  // 1 warning, 2 error, as the message severities
  std::string code;  // short stable name, e.g. "decimal-comma"
  int line = 0;      // line of the text model file, 0 where it concerns the model itself
  std::string text;  // names the pile, layer, element or token concerned
};

// Filled by the last read of a text model file (cleared when a read starts).
std::vector<Diagnostic>& ReadDiagnostics();
// Filled by the last model check (cleared when a check or a read starts).
std::vector<Diagnostic>& CheckDiagnostics();

}  // namespace quellon
