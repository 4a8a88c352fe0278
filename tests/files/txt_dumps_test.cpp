// The flag-driven dumps of the TXT report: which ones a flag brings, under which title,
// of which size, in which order, and what they print of the pile blocks.
#include <gtest/gtest.h>

#include <regex>
#include <string>
#include <vector>

#include "files/reports.h"
#include "txt_test_support.h"

namespace quellon {
namespace {

using testing::OpenLOG;
using testing::OpenTXT;
using testing::ReadLines;
using testing::SetAllFlags;
using testing::SmallModel;
using testing::TempFile;

// The titles and size lines of a dump listing, without the numbers: panel headings
// and numbered rows are dropped.
std::vector<std::string> Skeleton(const std::vector<std::string>& lines) {
  static const std::regex row(R"(^ *\d+ +-?\d\.\d\dE[+-]\d\d.*$)");
  std::vector<std::string> out;
  for (const std::string& l : lines)
    if (l.rfind(" Column:", 0) != 0 && !std::regex_match(l, row)) out.push_back(l);
  return out;
}

int CountLines(const std::vector<std::string>& lines, const std::string& text) {
  int n = 0;
  for (const std::string& l : lines) n += l == text ? 1 : 0;
  return n;
}

// Two piles of one element: M = 5, N = 10.
struct DumpRun {
  TempFile txt{".txt"};
  TempFile log{".log"};
  Engine e;
  explicit DumpRun(int increments) {
    SmallModel(e, 2, 1, increments);
    SetAllFlags(e.project, false);
    OpenTXT(e, txt.path());
    OpenLOG(e, log.path());
  }
  std::vector<std::string> Txt() {
    e.files.txt.close();
    return ReadLines(txt.path());
  }
  std::vector<std::string> Log() {
    e.files.log.close();
    return ReadLines(log.path());
  }
};

// Every dump of one increment in the driver's order.
void Increment(Engine& e, int i) {
  PrintIncrementHead(e, i);
  PrintSolveVectors(e);
  PrintUnitStresses(e);
  PrintUnitHeadLoads(e);
  PrintIncrementalDisplacements(e);
  PrintNonLinearMatrices(e, i);
}

TEST(TXTDumps, EachFlagBringsItsTitlesAndSizesInOrder) {
  DumpRun run(2);
  for (int f : {3, 4, 5, 6, 8, 9, 10, 12, 14, 17, 18, 19, 20}) run.e.project.Flags(f) = 1;
  PrintLimitingStresses(run.e);
  WriteSinglePileMatrix(run.e, 2);
  PrintPileMatrix(run.e, 2);
  Increment(run.e, 1);
  const std::string size_nn = " of size:   10 X  10";
  const std::string size_m = " of size:    5 X   5";
  const std::string stars(77, '*');
  const std::string vec = " of size: " + std::string(32, ' ');
  const std::vector<std::string> expected = {
      "", "Limiting pile shaft shear stresses (& base pressure) (kPa):", " Pile          1         2", " Element ",
      " ", "", "Limiting pile shaft normal stresses in X-direction (kPa):", " Pile          1         2", " Element ",
      " ", "", "Limiting pile shaft normal stresses in Y-direction (kPa):", " Pile          1         2", " Element ",
      " ", "", "Limiting pile torsional stresses (kPa):", " Pile          1         2", " Element ", " ",
      "", "Soil stiffness matrix soil_K for pile number     2", size_m,
      "Pile matrix for pile number     2", size_m,
      "", stars, std::string(26, ' ') + "OUTPUT AT INCREMENT    1", stars,
      "G -Initial (elastic) soil flexibility matrix of the group", size_nn,
      "D -Pile flexibility matrix of the group", size_nn,
      "UBCV -boundary condition vectors of the group", " of size:   10 X   6",
      "Traction vectors due to unit displmnt bound. conditions", " of size:   10 X   6",
      "", "Axial stresses due to unit displmnt bound. conditions", " of size:    4 X   6",
      "", "Trasv. stresses in X-dir due to unit displmnt bound. conditions", " of size:    2 X   6",
      "", "Trasv. stresses in Y-dir due to unit displmnt bound. conditions", " of size:    2 X   6",
      "", "Torsional stresses due to unit displmnt bound. conditions", " of size:    2 X   6",
      "", " Pile-head axial loads due to unit displ. boundary conditions", " of size:    2 X   6",
      " Pile-head transverse loads in X-dir due to unit displ. boundary conditions", " of size:    2 X   6",
      " Pile-head moments in XZ plane due to unit displ. boundary conditions", " of size:    2 X   6",
      " Pile-head transverse loads in Y-dir due to unit displ. boundary conditions", " of size:    2 X   6",
      " Pile-head moments in YZ plane due to unit displ. boundary conditions", " of size:    2 X   6",
      " Pile-head torsional moments in XY plane due to unit displ. boundary conditions", " of size:    2 X   6",
      "", "Increm. axial pile displacements (at element centre)", vec + "4",
      "Increm. transverse pile displacements in X-dir (at element centre)", vec + "2",
      "Increm. transverse pile displacements in Y-dir (at element centre)", vec + "2",
      "Increm. torsional pile rotations in XY plane (at element centre)", vec + "2",
      "G -Non-linear soil flexib. matrix of the group at increm.no.   1", size_nn,
      "G+D -Non-linear soil+pile flexib. matrix of the group after zeroing at increm. no.   1", size_nn,
  };
  const auto lines = run.Txt();
  EXPECT_EQ(Skeleton(lines), expected);
  // The number lines dropped from the skeleton: every row of every panel, and each
  // panel's column heading. An N by N matrix (N = 10) prints in panels of 7 and 3.
  const std::size_t numbers = (2 + 1 + 1 + 1)         // limiting stresses: n + 1 rows, then n
                              + 2 * (1 + 5)           // soil block and pile matrix, M = 5
                              + 2 * 2 * (1 + 10)      // G and D
                              + 2 * (1 + 10)          // UBCV and tractions
                              + (1 + 4) + 3 * (1 + 2) // unit stresses: (n + 1) P, then n P rows
                              + 6 * (1 + 2)           // head loads, P rows
                              + 4 + 3 * 2             // incremental displacements
                              + 2 * 2 * (1 + 10);     // non-linear G and G + D
  EXPECT_EQ(lines.size(), expected.size() + numbers);
  // One trace line per matrix and per vector, nothing for the per-pile tables.
  const auto log = run.Log();
  EXPECT_EQ(CountLines(log, "PrintMatrix, line 23"), 2 + 2 + 2 + 4 + 6 + 2);
  EXPECT_EQ(CountLines(log, "PrintMatrix, line 64"), 4);
}

TEST(TXTDumps, FlagsClearOrWrongStageWriteNothing) {
  {
    DumpRun run(2);
    PrintLimitingStresses(run.e);
    WriteSinglePileMatrix(run.e, 1);
    PrintPileMatrix(run.e, 1);
    Increment(run.e, 1);
    EXPECT_TRUE(run.Txt().empty());
    EXPECT_TRUE(run.Log().empty());
  }
  {
    // The initial G belongs to increment 1; the non-linear dumps and the limiting
    // stresses to non-linear runs.
    DumpRun run(1);
    for (int f : {5, 6, 8, 18}) run.e.project.Flags(f) = 1;
    PrintLimitingStresses(run.e);
    Increment(run.e, 2);
    EXPECT_TRUE(run.Txt().empty());
  }
}

TEST(TXTDumps, SinglePileMatrixIsThePilesDiagonalBlockOfG) {
  DumpRun run(1);
  run.e.project.Flags(3) = 1;
  RealMatrix& G = run.e.ws.G;
  for (int j = 1; j <= 10; ++j)
    for (int i = 1; i <= 10; ++i) G(i, j) = static_cast<float>(100 * i + j);
  WriteSinglePileMatrix(run.e, 2);
  const std::vector<std::string> expected = {
      "",
      "Soil stiffness matrix soil_K for pile number     2",
      " of size:    5 X   5",
      " Column:    1         2         3         4         5",
      "    1    6.06E+02  6.07E+02  6.08E+02  6.09E+02  6.10E+02",
      "    2    7.06E+02  7.07E+02  7.08E+02  7.09E+02  7.10E+02",
      "    3    8.06E+02  8.07E+02  8.08E+02  8.09E+02  8.10E+02",
      "    4    9.06E+02  9.07E+02  9.08E+02  9.09E+02  9.10E+02",
      "    5    1.01E+03  1.01E+03  1.01E+03  1.01E+03  1.01E+03",
  };
  EXPECT_EQ(run.Txt(), expected);
}

TEST(TXTDumps, UnitTablesPrintSixColumnsWhenTheyAreWider) {
  DumpRun run(1);
  ReleaseWorkspace(run.e);
  run.e.project.DynamicModel = 1;  // K = 6P = 12 columns
  ASSERT_EQ(CreateWorkspace(run.e), 1);
  ASSERT_EQ(run.e.ws.UBCV.cols(), 12);
  run.e.ws.UBCV(3, 7) = 99.0f;  // beyond the six columns that hold values
  run.e.project.Flags(9) = 1;
  PrintSolveVectors(run.e);
  const auto lines = run.Txt();
  ASSERT_EQ(lines.size(), 2u + 1u + 10u);
  EXPECT_EQ(lines[1], " of size:   10 X   6");
  EXPECT_EQ(lines[2], " Column:    1         2         3         4         5         6");
  EXPECT_EQ(lines[5], "    3    0.00E+00  0.00E+00  0.00E+00  0.00E+00  0.00E+00  0.00E+00");
}

}  // namespace
}  // namespace quellon
