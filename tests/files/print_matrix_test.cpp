// The panels of the printed matrices and pile tables: where a wide table is split. The
// layout of the rows within a panel is pinned by the golden reports.
#include "files/print_matrix.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "files/print_pile_table.h"
#include "../common/engine_support.h"

namespace quellon {
namespace {

TEST(PrintTables, PanelsOfSevenColumnsSixPilesAndTwentyYieldStates) {
  Engine e;
  ASSERT_EQ(CreatePiles(e, 22), 1);
  e.foundation.NumberOfElements = 1;
  e.foundation.Piles(8).Number = 17;  // a number read from a model file
  std::vector<std::string> matrix, piles, yields;
  ReportOut to_matrix(matrix), to_piles(piles), to_yields(yields);

  RealMatrix a;  // 3 by 8 with a(i, j) = 10 i + j
  a.resize(3, 8);
  for (int j = 1; j <= 8; ++j)
    for (int i = 1; i <= 3; ++i) a(i, j) = static_cast<float>(10 * i + j);
  PrintMatrix(e, to_matrix, a, 3, 8);
  ASSERT_EQ(matrix.size(), 9u);
  EXPECT_EQ(matrix[0], " of size:    3 X   8");
  EXPECT_EQ(matrix[1], " Column:    1         2         3         4         5         6         7");
  EXPECT_EQ(matrix[4], "    3    3.10E+01  3.20E+01  3.30E+01  3.40E+01  3.50E+01  3.60E+01  3.70E+01");
  EXPECT_EQ(matrix[5], " Column:    8");
  EXPECT_EQ(matrix[8], "    3    3.80E+01");

  RealVector v;  // the first 8 piles of the group, 100 p + k at row k of pile p
  v.resize(44);
  for (int p = 1; p <= 8; ++p)
    for (int k = 1; k <= 2; ++k) v((p - 1) * 2 + k) = static_cast<float>(100 * p + k);
  e.foundation.NumberOfPiles = 8;
  PrintPileTable(e, to_piles, v, true);
  e.foundation.NumberOfPiles = 22;
  ASSERT_EQ(piles.size(), 10u);
  EXPECT_EQ(piles[0], " Pile          1         2         3         4         5         6");
  EXPECT_EQ(piles[3], "    2        1.02E+02  2.02E+02  3.02E+02  4.02E+02  5.02E+02  6.02E+02");
  EXPECT_EQ(piles[5], " Pile          7        17");
  EXPECT_EQ(piles[8], "    2        7.02E+02  8.02E+02");

  LogicalMatrix yielded;
  yielded.resize(4, 22 * 5);
  yielded(2, 20 * 2 + 2) = 1;   // pile 21, base, in row 2
  yielded(2, 2 * 2 + 1) = 1;    // pile 3, element 1
  yielded(1, 1) = 1;            // row 1 is another direction: not printed
  yielded(2, 21 * 2 + 1) = -1;  // any non-zero logical is true
  PrintYieldTable(e, to_yields, yielded, 2, true);
  const std::vector<std::string> expected = {
      " Element      1  2  3  4  5  6  7 17  9 10 11 12 13 14 15 16 17 18 19 20",
      "",
      "   1        0  0  1  0  0  0  0  0  0  0  0  0  0  0  0  0  0  0  0  0",
      "   2        0  0  0  0  0  0  0  0  0  0  0  0  0  0  0  0  0  0  0  0",
      " Element     21 22",
      "",
      "   1        0  1",
      "   2        1  0",
  };
  EXPECT_EQ(yields, expected);
}

}  // namespace
}  // namespace quellon
