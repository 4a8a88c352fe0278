// The engine's main sequence: one analysis from the opening of its output files to the
// reset of the model.
#pragma once

#include <optional>
#include <string_view>

namespace quellon {

struct Engine;

// Runs the analysis of the model in e. xml_path is required; txt_path, when given,
// replaces the TXT report, and when absent the report open before (if any) goes on
// receiving output. Paths are taken as they stand apart from trailing blanks.
//
// Result 1: the increments ended in an orderly way (all of them, or the stop at the
// axial capacity of the group). Result 0: the XML output could not be opened (the model
// is kept and nothing else runs), or the workspace or the modulus table could not be
// made, or the model was refused by its checks, or a result was not a finite number, or
// the run failed for want of memory; the model is then reset all the same, and an XML
// document begun is closed. The host's closes of the run's outputs asked for during the
// run are carried out at its end.
// When the group stiffness of an increment can't be formed, the run is abandoned where
// it stands, workspace and model left in memory, with the result of the last solve.
int RunAnalysis(Engine& e, std::string_view xml_path, std::optional<std::string_view> txt_path);

// The end of a run at the axial capacity of the group after increment i: the LOG, both
// documents and the host hear of it, and Project.ErrorCode tells a single pile (259) from
// a group (260).
void StopAtCapacity(Engine& e, int i);

// Opens the run's outputs: closes the XML output of an earlier run and opens xml_path on
// its unit; with a TXT path, closes the TXT report and opens that path. 1 if the XML
// output is open afterwards (the TXT report may have failed; the run goes on without).
int OpenRunFiles(Engine& e, std::string_view xml_path, std::optional<std::string_view> txt_path);

}  // namespace quellon
