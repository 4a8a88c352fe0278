#include "files/text_model_numbers.h"

#include <gtest/gtest.h>

namespace quellon {
namespace {

TEST(TextModelNumbers, TrimKeepsDecimalsUpToTheLastNonZeroOne) {
  EXPECT_EQ(FormatTrimmed(12.0f, 2), "12.");
  EXPECT_EQ(FormatTrimmed(2500.0f, 2), "2500.");
  EXPECT_EQ(FormatTrimmed(0.0f, 2), "0.");
  EXPECT_EQ(FormatTrimmed(-0.0f, 1), "0.");
  EXPECT_EQ(FormatTrimmed(2.5f, 2), "2.5");
  EXPECT_EQ(FormatTrimmed(-50.5f, 2), "-50.5");
  EXPECT_EQ(FormatTrimmed(0.125f, 3), "0.125");
  EXPECT_EQ(FormatTrimmed(0.125f, 2), "0.13");
  // Decimal fractions that floats hold inexactly still trim to their short form, since
  // the scaling is done in single precision.
  EXPECT_EQ(FormatTrimmed(2.3f, 3), "2.3");
  EXPECT_EQ(FormatTrimmed(0.1f, 3), "0.1");
  EXPECT_EQ(FormatTrimmed(57.7f, 2), "57.7");
  EXPECT_EQ(FormatTrimmed(1234.56f, 2), "1234.56");
}

TEST(TextModelNumbers, TrimRoundsBeyondItsBoundAndKeepsTheLeadingZeroBelowOne) {
  EXPECT_EQ(FormatTrimmed(2.555f, 2), "2.56");  // 2.555f lies just above 2.555
  EXPECT_EQ(FormatTrimmed(1.23456f, 1), "1.2");
  EXPECT_EQ(FormatTrimmed(0.25f, 2), "0.25");
  EXPECT_EQ(FormatTrimmed(-0.25f, 2), "-0.25");
  EXPECT_EQ(FormatTrimmed(0.5f, 2), "0.5");
  // A carry leaves no zeros behind, and a value that rounds to zero is plain zero, so
  // that the text read back trims to itself.
  EXPECT_EQ(FormatTrimmed(2.996f, 2), "3.");
  EXPECT_EQ(FormatTrimmed(0.99999f, 2), "1.");
  EXPECT_EQ(FormatTrimmed(9.999f, 2), "10.");
  EXPECT_EQ(FormatTrimmed(1.2049f, 2), "1.2");
  EXPECT_EQ(FormatTrimmed(0.004f, 2), "0.");
  EXPECT_EQ(FormatTrimmed(-0.0049f, 2), "0.");
}

TEST(TextModelNumbers, TrimmedFieldWidths) {
  // Below 1 the width is exactly "0." and the decimals, one more with a sign.
  EXPECT_EQ(TrimmedFieldOf(0.25f, 2).width, 4);
  EXPECT_EQ(TrimmedFieldOf(-0.25f, 2).width, 5);
  EXPECT_EQ(TrimmedFieldOf(0.25f, 2).decimals, 2);
  // From 1 up the width is minimal.
  EXPECT_EQ(TrimmedFieldOf(12.0f, 2).width, 0);
  EXPECT_EQ(TrimmedFieldOf(12.0f, 2).decimals, 0);
  EXPECT_EQ(TrimmedFieldOf(0.0f, 3).width, 0);
}

TEST(TextModelNumbers, FixedHasExactDecimalsAndNoLeadingZero) {
  EXPECT_EQ(FormatFixed(12.0f, 0), "12.");
  EXPECT_EQ(FormatFixed(0.0f, 0), "0.");
  EXPECT_EQ(FormatFixed(0.5f, 2), ".50");
  EXPECT_EQ(FormatFixed(-0.5f, 2), "-.50");
  EXPECT_EQ(FormatFixed(0.0f, 2), ".00");
  EXPECT_EQ(FormatFixed(-0.0f, 2), ".00");
  EXPECT_EQ(FormatFixed(30.0f, 1), "30.0");
  EXPECT_EQ(FormatFixed(150.4f, 0), "150.");
  // Exact ties round away from zero, not to even.
  EXPECT_EQ(FormatFixed(148.5f, 0), "149.");
  EXPECT_EQ(FormatFixed(-148.5f, 0), "-149.");
  EXPECT_EQ(FormatFixed(0.125f, 2), ".13");
  EXPECT_EQ(DecimalText(2.5, 0), "3.");
  EXPECT_EQ(DecimalText(-0.0625, 3), "-0.063");
  EXPECT_EQ(DecimalText(-0.001, 2), "0.00");
  EXPECT_EQ(FormatFixed(-0.001f, 2), ".00");
  EXPECT_EQ(FormatFixed(1200.0f, 2), "1200.00");
}

}  // namespace
}  // namespace quellon
