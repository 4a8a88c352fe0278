// The summary of a run's load cases: one row per case with the cap movement, the largest
// pile compression and tension and the largest head moment, each with its pile, and in
// every column the case that governs it marked. Printed after the run's summary and
// written as STEM.cases.csv.
//
// Every value is taken at the case's last increment: the only one of a linear run, the
// full load (or the last load carried before the group's capacity) of a non-linear one.
// The pile loads are those at the head: the axial force along the pile (compression
// positive) and the resultant of the moments about X and about Y.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "console.h"
#include "run_results.h"

namespace quellon_cli {

// The columns that a case can govern, in the table's order.
enum CaseColumn {
  kCaseX, kCaseY, kCaseZ, kCaseAboutX, kCaseAboutY, kCaseAboutZ,
  kCaseCompression, kCaseTension, kCaseMoment, kCaseColumns
};

struct CaseRow {
  int number = 0;
  std::string name;
  int increment = 0;     // the last increment read, 0 if the case has none
  bool stopped = false;  // a non-linear case that stopped before its last increment
  bool has_cap = false;
  std::array<double, 6> move{};  // m, rad
  bool has_piles = false;
  double compression = 0, tension = 0, moment = 0;  // kN, kN (positive), kNm
  int compression_pile = 0, tension_pile = 0, moment_pile = 0;  // 0: none (no pile in tension)
  std::array<bool, kCaseColumns> governs{};
};

struct CaseTable {
  bool nonlinear = false;
  std::string comment;
  std::vector<CaseRow> rows;
};

CaseTable SummariseCases(const LoadCaseDocument& document);

void PrintCaseTable(Console& c, const CaseTable& table);

// Writes the table as CSV; "" or the reason it could not.
std::string WriteCaseCsv(const CaseTable& table, const std::string& path);

// After a run with load cases: reads the cases document, prints the table and writes it
// as CSV to `csv_path` unless that is empty; adds the files written to `outputs`.
void ReportLoadCases(Console& c, const std::string& document_path, const std::string& csv_path, std::string& outputs);

}  // namespace quellon_cli
