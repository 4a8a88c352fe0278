// The flag-driven dumps of the TXT report stay silent outside their stage: the initial G
// belongs to increment 1, the non-linear dumps and the limiting stresses to non-linear
// runs. What they print, and that they print nothing with their flags clear, is pinned
// by the golden reports; so is the stage of most of them, but a run calls the limiting
// stresses only when it is non-linear, so their own guard shows only here.
#include <gtest/gtest.h>

#include "files/reports.h"
#include "../common/engine_support.h"

namespace quellon {
namespace {

TEST(TXTDumps, WrongStageWritesNothing) {
  testing::TempFile txt(".txt");
  Engine e;
  testing::SmallModel(e, 2, 1, 1);
  testing::SetAllFlags(e.project, false);
  for (int f : {5, 6, 8, 18}) e.project.Flags(f) = 1;
  testing::OpenTXT(e, txt.path());
  PrintLimitingStresses(e);
  PrintIncrementHead(e, 2);
  PrintSolveVectors(e);
  PrintUnitStresses(e);
  PrintUnitHeadLoads(e);
  PrintIncrementalDisplacements(e);
  PrintNonLinearMatrices(e, 2);
  e.files.txt.close();
  EXPECT_TRUE(testing::ReadLines(txt.path()).empty());
}

}  // namespace
}  // namespace quellon
