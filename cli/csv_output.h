// The results of a run as CSV files a spreadsheet opens directly: one header row that
// names each column with its unit, a comma between fields, a point as the decimal
// separator whatever the locale.
//
//   STEM.heads.csv     per increment and pile, the loads and movements of the pile head
//                      in external axes
//   STEM.profiles.csv  per increment, pile and element, where the element lies, the loads
//                      at its top, its movement and its stresses (with limits and yield
//                      state in a non-linear run), in the pile's own axes
//   STEM.history.csv   a non-linear run only: per increment the cap loads and movements
#pragma once

#include <string>
#include <vector>

#include "run_results.h"

namespace quellon_cli {

struct CsvOutcome {
  std::vector<std::string> written;  // paths
  std::vector<std::string> notes;    // files skipped or cut short, and why
  std::string problem;               // the XML could not be read, or a file not written
};

// Writes the files of `results` as STEM.*.csv.
CsvOutcome WriteResultCsv(const RunResults& results, const std::string& stem);

// Reads the run's XML output and writes its CSV files as STEM.*.csv.
CsvOutcome WriteResultCsv(const std::string& xml_path, const std::string& stem);

// A number as the CSV files print it: up to 6 significant digits, a point, no "-0".
std::string CsvNumber(double v);

}  // namespace quellon_cli
