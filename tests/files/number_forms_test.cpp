#include "files/number_forms.h"

#include <gtest/gtest.h>

#include <cmath>

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

TEST(NumberForms, ZeroHasNoSignButASmallNegativeValueKeepsIt) {
  // -0.0 falls out of sums such as -(0 * h) - 0; it must not print as a negative value.
  EXPECT_EQ(FormatFix(-0.0, 6, 2), "  0.00");
  EXPECT_EQ(FormatSci(-0.0f, 10, 2), "  0.00E+00");
  EXPECT_EQ(FormatFrac(-0.0f, 10, 2), "  0.00E+00");
  EXPECT_EQ(FormatFix(-0.004, 6, 2), " -0.00");
}

TEST(NumberForms, PowersOfTenAndSinglePrecisionValues) {
  EXPECT_EQ(FormatFix(1000.0f, 12, 1), "      1000.0");
  EXPECT_EQ(FormatSci(1e-6f, 10, 2), "  1.00E-06");
  EXPECT_EQ(FormatSci(0.001f, 13, 2), "     1.00E-03");
  EXPECT_EQ(FormatFrac(1e-6f, 10, 2), "  0.10E-05");
  EXPECT_EQ(FormatFrac(1.0f, 10, 2), "  0.10E+01");
  EXPECT_EQ(FormatFrac(0.1f, 10, 2), "  0.10E+00");
  // Rounding carries into the exponent in both scientific forms.
  EXPECT_EQ(FormatSci(9.996f, 10, 2), "  1.00E+01");
  EXPECT_EQ(FormatFrac(0.09996f, 10, 2), "  0.10E+00");
}

TEST(NumberForms, FieldsTooNarrowOrValuesNotFinite) {
  EXPECT_EQ(FormatInt(-100, 3), "***");
  EXPECT_EQ(FormatFix(-99999.96f, 8, 1), "********");  // rounds to -100000.0
  EXPECT_EQ(FormatSci(-1.0f, 9, 2), "-1.00E+00");
  EXPECT_EQ(FormatSci(-1.0f, 8, 2), "********");  // one column short
  EXPECT_EQ(FormatSci(1.0f / 0.0f, 10, 2), "**********");
  EXPECT_EQ(FormatFix(std::nanf(""), 6, 2), "******");
}

TEST(NumberForms, NoDecimalsKeepThePoint) {
  EXPECT_EQ(FormatFix(250.0f, 6, 0), "  250.");
  EXPECT_EQ(FormatSci(1500.0f, 8, 0), "  2.E+03");
  // The frac form shows significant digits only; it needs one.
  EXPECT_EQ(FormatFrac(1500.0f, 8, 0), " 0.2E+04");
}

TEST(NumberForms, ZeroPaddedIntegersForDates) {
  EXPECT_EQ(FormatIntPadded(2000, 4), "2000");
  EXPECT_EQ(FormatIntPadded(7, 2), "07");
  EXPECT_EQ(FormatIntPadded(0, 4), "0000");
  EXPECT_EQ(FormatIntPadded(12345, 4), "****");
  // w digits and a sign do not fit in w columns.
  EXPECT_EQ(FormatIntPadded(-5, 4), "****");
}

}  // namespace
}  // namespace quellon
