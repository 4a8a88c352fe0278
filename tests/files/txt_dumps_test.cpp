// The flag-driven dumps of the TXT report: when they stay silent, and what they print
// of the pile blocks and the wide unit tables. Their titles, sizes and order are
// pinned by the golden increments.
#include <gtest/gtest.h>

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
  // A table wider than the six columns that hold values still prints six.
  ASSERT_EQ(Create2DRealMatrix(run.e, run.e.ws.UBCV, 10, 12), 1);
  run.e.ws.UBCV(3, 7) = 99.0f;
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
