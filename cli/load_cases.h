// Load cases for `quellon run --load-cases CASES.csv`: the CSV file an engineer writes
// (or a spreadsheet exports), one row per case: name, Fx, Fy, Fz, Mx, My, Mz, X, Y in
// the model's units (kN, kNm, m; Fz positive downward, the moments about the axes through
// the point X, Y where the loads act, as the model file's own load line).
//
// The file is read whole before the run, and the first fault stops it with the file,
// line and column, so that a run never starts on a half-read list:
//   CASES.csv:7: column 4 (Fz): 'abc' is not a number
#pragma once

#include <array>
#include <string>
#include <vector>

#include "output_paths.h"

namespace quellon_cli {

struct LoadCase {
  int line = 0;  // of the file, for messages
  std::string name;
  std::array<double, 8> values{};  // Fx, Fy, Fz (kN), Mx, My, Mz (kNm), X, Y (m)
};

struct LoadCaseList {
  std::vector<LoadCase> cases;
  std::string problem;  // "" or "FILE:LINE: what is wrong"
};

// Reads CASES.csv. A first row whose eight number columns all hold text and no number is
// a header and is skipped; blank rows (also rows of empty fields) are skipped; fields may
// be quoted ("Wind, +X") with "" for a quote. Names are trimmed, must not be empty and
// must differ.
LoadCaseList ReadLoadCases(const std::string& path);

// The outputs that a run with load cases adds: the cases document (written by the engine
// as its temporary name and moved into place with the others) and the summary table as
// CSV (empty with --no-csv). Both are named after the XML output: STEM.cases.xml and
// STEM.cases.csv.
std::string CasesDocumentName(const std::string& xml_path);
std::string CasesCsvName(const std::string& xml_path);

// The case file must not be one of the outputs, which would overwrite it; with CSV files
// on (csv_path not empty) these include the run's own CSV files. "" or why.
std::string CheckCasesInput(const std::string& cases_path, const OutputSet& outputs, const std::string& csv_path);

// Hands the cases to the engine with the temporary path of the cases document. Call after
// the model is read and before the run. "" or why the engine refused.
std::string SendLoadCases(const std::vector<LoadCase>& cases, const std::string& document_part_path);

}  // namespace quellon_cli
