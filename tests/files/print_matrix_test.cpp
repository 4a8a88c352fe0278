// The panels of the printed matrices and pile tables: where a wide table is split.
#include "files/print_matrix.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "files/print_pile_table.h"
#include "txt_test_support.h"

namespace quellon {
namespace {

TEST(PrintTables, EightColumnsGoInPanelsOfSevenAndOne) {
  Engine e;
  RealMatrix a;
  a.resize(3, 8);
  for (int j = 1; j <= 8; ++j)
    for (int i = 1; i <= 3; ++i) a(i, j) = static_cast<float>(10 * i + j);
  std::vector<std::string> lines;
  ReportOut out(lines);
  PrintMatrix(e, out, a, 3, 8);
  const std::vector<std::string> expected = {
      " of size:    3 X   8",
      " Column:    1         2         3         4         5         6         7",
      "    1    1.10E+01  1.20E+01  1.30E+01  1.40E+01  1.50E+01  1.60E+01  1.70E+01",
      "    2    2.10E+01  2.20E+01  2.30E+01  2.40E+01  2.50E+01  2.60E+01  2.70E+01",
      "    3    3.10E+01  3.20E+01  3.30E+01  3.40E+01  3.50E+01  3.60E+01  3.70E+01",
      " Column:    8",
      "    1    1.80E+01",
      "    2    2.80E+01",
      "    3    3.80E+01",
  };
  EXPECT_EQ(lines, expected);
}

TEST(PrintTables, EightPilesGoInPanelsOfSixAndTwo) {
  Engine e;
  ASSERT_EQ(CreatePiles(e, 8), 1);
  e.foundation.NumberOfElements = 1;
  e.foundation.Piles(8).Number = 17;  // a number read from a model file
  RealVector v;
  v.resize(16);  // 100 p + k at row k of pile p, the base row included
  for (int p = 1; p <= 8; ++p)
    for (int k = 1; k <= 2; ++k) v((p - 1) * 2 + k) = static_cast<float>(100 * p + k);
  std::vector<std::string> lines;
  ReportOut out(lines);
  PrintPileTable(e, out, v, true);
  const std::vector<std::string> expected = {
      " Pile          1         2         3         4         5         6",
      " Element ",
      "    1        1.01E+02  2.01E+02  3.01E+02  4.01E+02  5.01E+02  6.01E+02",
      "    2        1.02E+02  2.02E+02  3.02E+02  4.02E+02  5.02E+02  6.02E+02",
      " ",
      " Pile          7        17",
      " Element ",
      "    1        7.01E+02  8.01E+02",
      "    2        7.02E+02  8.02E+02",
      " ",
  };
  EXPECT_EQ(lines, expected);
}

TEST(PrintTables, TwentyTwoPilesOfYieldStatesGoInPanelsOfTwentyAndTwo) {
  Engine e;
  ASSERT_EQ(CreatePiles(e, 22), 1);
  e.foundation.NumberOfElements = 1;
  LogicalMatrix yielded;
  yielded.resize(4, 22 * 5);
  yielded(2, 20 * 2 + 2) = 1;   // pile 21, base, in row 2
  yielded(2, 2 * 2 + 1) = 1;    // pile 3, element 1
  yielded(1, 1) = 1;            // row 1 is another direction: not printed
  yielded(2, 21 * 2 + 1) = -1;  // any non-zero logical is true
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
