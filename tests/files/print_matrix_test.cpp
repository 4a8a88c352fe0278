#include "files/print_matrix.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "txt_test_support.h"

namespace quellon {
namespace {

using testing::OpenLOG;
using testing::ReadLines;
using testing::TempFile;

// 3 by 8 with a(i, j) = 10 i + j, so every printed value names its own place.
RealMatrix EightColumns() {
  RealMatrix a;
  a.resize(3, 8);
  for (int j = 1; j <= 8; ++j)
    for (int i = 1; i <= 3; ++i) a(i, j) = static_cast<float>(10 * i + j);
  return a;
}

TEST(PrintMatrix, EightColumnsGoInPanelsOfSevenAndOne) {
  Engine e;
  std::vector<std::string> lines;
  ReportOut out(lines);
  PrintMatrix(e, out, EightColumns(), 3, 8);
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

TEST(PrintVector, OneLinePerElementUnderAWideSizeField) {
  Engine e;
  RealVector v;
  v.resize(3);
  v(1) = 1.0e-7f;
  v(2) = -1234.5f;
  v(3) = 0.0f;
  std::vector<std::string> lines;
  ReportOut out(lines);
  PrintVector(e, out, v, 3);
  const std::vector<std::string> expected = {
      " of size:                                 3",
      "    1    1.00E-07",
      "    2   -1.23E+03",
      "    3    0.00E+00",
  };
  EXPECT_EQ(lines, expected);
}

TEST(PrintMatrix, TraceLinesGoToTheLogAndAClosedSinkWritesNothing) {
  TempFile log(".log");
  Engine e;
  OpenLOG(e, log.path());
  RealVector v;
  v.resize(2);
  std::vector<std::string> lines;
  ReportOut out(lines);
  PrintMatrix(e, out, EightColumns(), 3, 8);
  PrintVector(e, out, v, 2);
  ReportOut closed;
  PrintMatrix(e, closed, EightColumns(), 3, 8);
  PrintVector(e, closed, v, 2);
  e.files.log.close();
  const std::vector<std::string> expected = {"PrintMatrix, line 23", "PrintMatrix, line 64"};
  EXPECT_EQ(ReadLines(log.path()), expected);
  // Nothing of the numbers reaches the LOG.
  EXPECT_EQ(lines.size(), 9u + 3u);
}

}  // namespace
}  // namespace quellon
