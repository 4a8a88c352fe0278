#include "files/number_forms.h"

#include <gtest/gtest.h>

namespace quellon {
namespace {

TEST(NumberForms, FixedPointMinimalAndFixedWidth) {
  EXPECT_EQ(FormatFix(12.0, 0, 0), "12.");
  EXPECT_EQ(FormatFix(0.0, 0, 0), "0.");
  EXPECT_EQ(FormatFix(0.5, 0, 2), ".50");
  EXPECT_EQ(FormatFix(-0.5, 0, 2), "-.50");
  EXPECT_EQ(FormatFix(2500000.0, 0, 2), "2500000.00");
  // A fixed width keeps the digit before the point while it fits, then drops it.
  EXPECT_EQ(FormatFix(0.5, 6, 2), "  0.50");
  EXPECT_EQ(FormatFix(0.5, 3, 2), ".50");
  EXPECT_EQ(FormatFix(-12.345, 8, 2), "  -12.35");
  EXPECT_EQ(FormatFix(123456.0, 5, 1), "*****");
  // Rounding is of the single-precision value: 2.555f lies above 2.555.
  EXPECT_EQ(FormatFix(2.555f, 0, 2), "2.56");
}

TEST(NumberForms, ScientificAndFraction) {
  EXPECT_EQ(FormatSci(1234.5, 10, 2), "  1.23E+03");
  EXPECT_EQ(FormatSci(-0.000123, 10, 2), " -1.23E-04");
  EXPECT_EQ(FormatSci(0.0, 10, 2), "  0.00E+00");
  EXPECT_EQ(FormatSci(1000.0, 10, 2), "  1.00E+03");
  EXPECT_EQ(FormatSci(-1.0e10, 8, 2), "********");
  EXPECT_EQ(FormatFrac(123.0, 10, 2), "  0.12E+03");
  EXPECT_EQ(FormatFrac(-123.0, 10, 2), " -0.12E+03");
  EXPECT_EQ(FormatFrac(0.0, 10, 2), "  0.00E+00");
  EXPECT_EQ(FormatFrac(1000.0, 10, 2), "  0.10E+04");
  // Rounding up to the next power of ten moves the exponent.
  EXPECT_EQ(FormatFrac(999.0, 10, 2), "  0.10E+04");
  EXPECT_EQ(FormatFrac(-123.0, 9, 2), "-0.12E+03");
  EXPECT_EQ(FormatFrac(-123.0, 8, 2), "-.12E+03");
  EXPECT_EQ(FormatFrac(-123.0, 7, 2), "*******");
}

TEST(NumberForms, Integers) {
  EXPECT_EQ(FormatInt(42, 5), "   42");
  EXPECT_EQ(FormatInt(-7), "-7");
  EXPECT_EQ(FormatInt(12345, 4), "****");
}

}  // namespace
}  // namespace quellon
