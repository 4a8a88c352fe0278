// What the fuzz target does with one model file, shared with the test that replays the
// target's seeds and regression cases in every build (tests/files/tmw_regressions_test.cpp).
//
// The file is read into a fresh engine as READTMWFILEDIRECT reads a host's file. A model
// that reads well is written back as a TMK file and then analysed: a small one by a
// whole run (checks, assembly, increments, reports), a larger one only as far as the
// model checks, which are quick at any size.
#pragma once

#include <cstdint>
#include <string>

#include "engine/engine.h"
#include "engine/model_checks.h"
#include "engine/run_analysis.h"
#include "files/text_model.h"
#include "solution/solution.h"

namespace quellon::fuzzing {

// A machine with 1 MB to spare: a file that asks for thousands of piles or layers is
// refused by the tables' memory check, as on a small machine, instead of filling
// megabytes at each input.
inline std::uint64_t SmallMachine() { return std::uint64_t{1} << 20; }

// A model that a whole run analyses in some tens of milliseconds at most: the torsion
// rings of every pile's own block (1600 point pairs per pair of elements) and the blocks
// between piles bound the work. Up to 16 elements a pile, so that the unloading of
// elements, which needs more than 15, is reached too. A model without piles or elements
// is refused at once, and runs too.
inline bool SmallEnoughToRun(const Engine& e) {
  const long long P = e.foundation.NumberOfPiles;
  const long long n = e.foundation.NumberOfElements;
  if (P < 1 || n < 1) return true;
  if (n > 16 || P > 24) return false;
  const long long work = P * n * n * 1600 + P * P * (n + 1) * (n + 1);
  return work <= 600000 && e.actions.NumberOfIncrements <= 5 && e.borehole.NumberOfLayers <= 8;
}

struct ReplayPaths {
  std::string input, tmk, xml, txt;
};

// What became of a model file. ran: the result of the run of a small model; checked:
// the result of the model checks of a larger one; -1 where the replay didn't get there.
// tables_match: after a good read, the pile and layer tables are as long as the counts.
struct ReplayOutcome {
  int read = 0;
  bool tables_match = true;
  int ran = -1;
  int checked = -1;
};

inline ReplayOutcome ReplayModelFile(const ReplayPaths& paths) {
  ReplayOutcome out;
  Engine e;
  e.memory_probe = &SmallMachine;
  // The unit is opened here rather than through ReadTMWFile, which announces every file
  // on standard output.
  if (!e.files.tmw.open_for_reading(paths.input)) return out;
  e.project.TMWUnit = kTMWUnit;
  out.read = ReadTMWUnit(e, kTMWUnit);
  if (out.read != 1) return out;

  const auto piles = static_cast<std::size_t>(e.foundation.NumberOfPiles > 0 ? e.foundation.NumberOfPiles : 0);
  const auto layers = static_cast<std::size_t>(e.borehole.NumberOfLayers > 0 ? e.borehole.NumberOfLayers : 0);
  out.tables_match = e.foundation.PileTable.size() == piles && e.borehole.LayerTable.size() == layers;

  CreateTMKFile(e, paths.tmk);
  if (SmallEnoughToRun(e)) {
    out.ran = RunAnalysis(e, paths.xml, paths.txt);
  } else {
    PrepareGroupGeometry(e);
    out.checked = CheckModel(e);
  }
  return out;
}

}  // namespace quellon::fuzzing
