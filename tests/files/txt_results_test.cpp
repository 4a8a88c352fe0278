// The result tables of an increment: the cut-offs of small values, flag 38, which
// tables a linear run leaves out, the coefficient tables and the capacity stop.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "files/reports.h"
#include "txt_test_support.h"

namespace quellon {
namespace {

using testing::OpenTXT;
using testing::ReadLines;
using testing::SetAllFlags;
using testing::SmallModel;
using testing::TempFile;

bool ContainsRun(const std::vector<std::string>& lines, const std::vector<std::string>& run) {
  for (std::size_t i = 0; i + run.size() <= lines.size(); ++i) {
    bool all = true;
    for (std::size_t k = 0; all && k < run.size(); ++k) all = lines[i + k] == run[k];
    if (all) return true;
  }
  return false;
}

bool ContainsText(const std::vector<std::string>& lines, const std::string& text) {
  for (const std::string& l : lines)
    if (l.find(text) != std::string::npos) return true;
  return false;
}

// One pile of one element: every table is a column of two rows at most. Values sit on
// both sides of the cut-offs: 0.001 for loads and stresses, 1e-6 for movements.
void SmallValues(Engine& e) {
  Workspace& w = e.ws;
  const float cap_disp[6] = {1e-6f, -1.1e-6f, 5e-7f, 2e-3f, 0.0f, -1e-6f};
  for (int i = 1; i <= 6; ++i) {
    w.CapDispTotal(i) = cap_disp[i - 1];
    w.CapDispInc(i) = cap_disp[i - 1];
  }
  w.StressAxial(1) = 0.001f;      // at the cut-off: cut
  w.StressAxial(2) = -0.0015f;    // above: stays
  w.StressAxialInc(1) = 0.0005f;  // increments are never cut
  w.HeadDispAxial(1) = 9e-7f;
  w.DispAxial(1) = 1e-6f;
  w.DispAxial(2) = 2e-6f;
  w.PileHeadAxial(1) = 0.0008f;
  w.LoadAxial(1) = -0.002f;
  w.LoadAxial(2) = 0.001f;
}

std::vector<std::string> Results(bool keep_small) {
  TempFile txt(".txt");
  Engine e;
  SmallModel(e, 1, 1, 1);
  SetAllFlags(e.project, false);
  for (int f : {24, 25, 26, 27, 31}) e.project.Flags(f) = 1;
  e.project.Flags(38) = keep_small ? 1 : 0;
  SmallValues(e);
  OpenTXT(e, txt.path());
  WriteTXTIncrementResults(e, 1);
  e.files.txt.close();
  return ReadLines(txt.path());
}

TEST(TXTResults, SmallTotalsPrintAsZeroUnlessFlag38) {
  const auto cut = Results(false);
  const auto kept = Results(true);
  // The incremental cap movement is never cut.
  for (const auto* lines : {&cut, &kept}) {
    EXPECT_TRUE(ContainsRun(*lines, {" INCREMENTAL CAP DISPLACEMENTS :",
                                     "     Vert.        Horiz.       Rot.        Horiz.       Rot.      Rot.",
                                     "                  (X-dir)      (XZ)        (Y-dir)      (YZ)      (XY)",
                                     "     1.00E-06    -1.10E-06     5.00E-07     2.00E-03     0.00E+00    -1.00E-06"}));
    EXPECT_TRUE(ContainsRun(*lines, {"Incremental pile shaft shear stresses (and base pressure) :", " Pile          1",
                                     " Element ", "    1        5.00E-04", "    2        0.00E+00", " "}));
  }
  const std::string raft = "RESULTANT RAFT DISPLACEMENTS :";
  const std::string raft1 = "     Vert.        Horiz.       Rot.         Horiz.       Rot.         Rot.";
  const std::string raft2 = "                  (X-dir)      (XZ)         (Y-dir)      (YZ)         (XY)";
  EXPECT_TRUE(ContainsRun(cut, {"", raft, raft1, raft2,
                                "     0.00E+00    -1.10E-06     0.00E+00     2.00E-03     0.00E+00     0.00E+00"}));
  EXPECT_TRUE(ContainsRun(kept, {"", raft, raft1, raft2,
                                 "     1.00E-06    -1.10E-06     5.00E-07     2.00E-03     0.00E+00    -1.00E-06"}));

  const std::string stress = " Resultant pile shaft shear stresses (and base pressure) :";
  EXPECT_TRUE(ContainsRun(cut, {stress, " Pile          1", " Element ", "    1        0.00E+00", "    2       -1.50E-03"}));
  EXPECT_TRUE(ContainsRun(kept, {stress, " Pile          1", " Element ", "    1        1.00E-03", "    2       -1.50E-03"}));

  // Head and element rows of the with-head tables are cut alike.
  const std::string displ = "Resultant pile axial displs (at element centre):";
  EXPECT_TRUE(ContainsRun(cut, {displ, " Pile          1", " Element ", "    Head    0.00E+00", "    1       0.00E+00",
                                "    2       2.00E-06", " "}));
  EXPECT_TRUE(ContainsRun(kept, {displ, " Pile          1", " Element ", "    Head    0.90E-06", "    1       1.00E-06",
                                 "    2       2.00E-06", " "}));
  const std::string loads = "Resultant pile axial loads (at top of each element):";
  EXPECT_TRUE(ContainsRun(cut, {loads, " Pile          1", " Element ", "    Head    0.00E+00", "    1      -2.00E-03",
                                "    2       0.00E+00", " "}));
  EXPECT_TRUE(ContainsRun(kept, {loads, " Pile          1", " Element ", "    Head    0.80E-03", "    1      -2.00E-03",
                                 "    2       1.00E-03", " "}));
}

TEST(TXTResults, CutCopiesLeaveTheTotalsAlone) {
  TempFile txt(".txt");
  Engine e;
  SmallModel(e, 1, 1, 1);
  SetAllFlags(e.project, true);
  e.project.Flags(38) = 0;
  SmallValues(e);
  OpenTXT(e, txt.path());
  WriteTXTIncrementResults(e, 1);
  EXPECT_EQ(e.ws.StressAxial(1), 0.001f);
  EXPECT_EQ(e.ws.DispAxial(1), 1e-6f);
  EXPECT_EQ(e.ws.CapDispTotal(1), 1e-6f);
  EXPECT_EQ(e.ws.PileHeadAxial(1), 0.0008f);
}

TEST(TXTResults, HistoryTablesAtTheLastIncrementOfANonLinearRunOnly) {
  const std::string incr_head = "                  INCREMENT - INCREM. CAP DISPLMNTS";
  const std::string loads_head = "                 APPLIED LOADS    -     RESULTANT CAP DISPLMNTS";
  const std::string yield_head = "Identification state of elements (0=elastic, 1=plastic):";
  const std::string count = "Total no. of yielded elements due to shear stresses=";
  struct Case {
    int increments, increment;
    bool history, yield;
  };
  for (const Case c : {Case{1, 1, false, false}, Case{3, 2, false, true}, Case{3, 3, true, true}}) {
    TempFile txt(".txt");
    Engine e;
    SmallModel(e, 1, 1, c.increments);
    SetAllFlags(e.project, true);
    OpenTXT(e, txt.path());
    WriteTXTIncrementResults(e, c.increment);
    e.files.txt.close();
    const auto lines = ReadLines(txt.path());
    EXPECT_EQ(ContainsText(lines, incr_head), c.history) << c.increments << " " << c.increment;
    EXPECT_EQ(ContainsText(lines, loads_head), c.history);
    EXPECT_EQ(ContainsText(lines, yield_head), c.yield);
    EXPECT_EQ(ContainsText(lines, count), c.yield);
  }
}

TEST(TXTResults, CapacityStopNamesThePileOrTheGroup) {
  for (int piles : {1, 3}) {
    TempFile txt(".txt");
    Engine e;
    SmallModel(e, piles, 1, 12);
    OpenTXT(e, txt.path());
    WriteTXTCapacityStop(e, 11);
    e.files.txt.close();
    const std::string stars(72, '*');
    const std::string what = piles == 1 ? "pile" : "group";
    const std::vector<std::string> expected = {
        stars, "ERROR: Ultimate axial capacity of the " + what + " reached at load increment no 11",
        " Please re-run TOLMARK for lower applied loads", stars};
    EXPECT_EQ(ReadLines(txt.path()), expected);
  }
}

}  // namespace
}  // namespace quellon
