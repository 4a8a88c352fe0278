#include "files/print_pile_table.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "engine/model_tables.h"
#include "txt_test_support.h"

namespace quellon {
namespace {

// An engine with P piles of n elements; no workspace is needed by these routines.
void Group(Engine& e, int piles, int elements) {
  ASSERT_EQ(CreatePiles(e, piles), 1);
  e.foundation.NumberOfElements = elements;
}

// A group vector holding 100 p + k at row k of pile p, `rows` rows per pile.
RealVector Numbered(int piles, int rows) {
  RealVector v;
  v.resize(piles * rows);
  for (int p = 1; p <= piles; ++p)
    for (int k = 1; k <= rows; ++k) v((p - 1) * rows + k) = static_cast<float>(100 * p + k);
  return v;
}

TEST(PrintPileTable, EightPilesGoInPanelsOfSixAndTwo) {
  Engine e;
  Group(e, 8, 2);
  std::vector<std::string> lines;
  ReportOut out(lines);
  PrintPileTable(e, out, Numbered(8, 3), true);
  const std::vector<std::string> expected = {
      " Pile          1         2         3         4         5         6",
      " Element ",
      "    1        1.01E+02  2.01E+02  3.01E+02  4.01E+02  5.01E+02  6.01E+02",
      "    2        1.02E+02  2.02E+02  3.02E+02  4.02E+02  5.02E+02  6.02E+02",
      "    3        1.03E+02  2.03E+02  3.03E+02  4.03E+02  5.03E+02  6.03E+02",
      " ",
      " Pile          7         8",
      " Element ",
      "    1        7.01E+02  8.01E+02",
      "    2        7.02E+02  8.02E+02",
      "    3        7.03E+02  8.03E+02",
      " ",
  };
  EXPECT_EQ(lines, expected);
}

TEST(PrintPileTable, WithoutTheBaseRowEachPileHasNRowsAndPilesShowTheirNumbers) {
  Engine e;
  Group(e, 2, 2);
  e.foundation.Piles(2).Number = 17;  // a number read from a model file
  std::vector<std::string> lines;
  ReportOut out(lines);
  PrintPileTable(e, out, Numbered(2, 2), false);
  const std::vector<std::string> expected = {
      " Pile          1        17",
      " Element ",
      "    1        1.01E+02  2.01E+02",
      "    2        1.02E+02  2.02E+02",
      " ",
  };
  EXPECT_EQ(lines, expected);
}

TEST(PrintPileTableWithHead, HeadRowInFracFormAndOneClosingLine) {
  Engine e;
  Group(e, 8, 1);
  RealVector head;
  head.resize(8);
  for (int p = 1; p <= 8; ++p) head(p) = -0.5f * static_cast<float>(p);
  std::vector<std::string> lines;
  ReportOut out(lines);
  PrintPileTableWithHead(e, out, head, Numbered(8, 2), true);
  const std::vector<std::string> expected = {
      " Pile          1         2         3         4         5         6",
      " Element ",
      "    Head   -0.50E+00 -0.10E+01 -0.15E+01 -0.20E+01 -0.25E+01 -0.30E+01",
      "    1       1.01E+02  2.01E+02  3.01E+02  4.01E+02  5.01E+02  6.01E+02",
      "    2       1.02E+02  2.02E+02  3.02E+02  4.02E+02  5.02E+02  6.02E+02",
      " Pile          7         8",
      " Element ",
      "    Head   -0.35E+01 -0.40E+01",
      "    1       7.01E+02  8.01E+02",
      "    2       7.02E+02  8.02E+02",
      " ",
  };
  EXPECT_EQ(lines, expected);
}

TEST(PrintYieldTable, TwentyTwoPilesGoInPanelsOfTwentyAndTwo) {
  Engine e;
  Group(e, 22, 1);
  LogicalMatrix yielded;
  yielded.resize(4, 22 * 5);
  const int rows = 2;  // one shaft element and the base
  yielded(2, (21 - 1) * rows + 2) = 1;  // pile 21, base, in row 2
  yielded(2, (3 - 1) * rows + 1) = 1;   // pile 3, element 1, in row 2
  yielded(1, (1 - 1) * rows + 1) = 1;   // row 1 is another direction: not printed
  yielded(2, (22 - 1) * rows + 1) = -1;  // any non-zero logical is true
  std::vector<std::string> lines;
  ReportOut out(lines);
  PrintYieldTable(e, out, yielded, 2, true);
  const std::vector<std::string> expected = {
      " Element      1  2  3  4  5  6  7  8  9 10 11 12 13 14 15 16 17 18 19 20",
      "",
      "   1        0  0  1  0  0  0  0  0  0  0  0  0  0  0  0  0  0  0  0  0",
      "   2        0  0  0  0  0  0  0  0  0  0  0  0  0  0  0  0  0  0  0  0",
      " Element     21 22",
      "",
      "   1        0  1",
      "   2        1  0",
  };
  EXPECT_EQ(lines, expected);
}

}  // namespace
}  // namespace quellon
