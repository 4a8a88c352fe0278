// The number forms and line writers of the XML output.
#include "files/xml_writing.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace quellon {
namespace {

TEST(XMLWriting, RealFieldFormatGivesFourSignificantDigitsAndNoPadding) {
  struct Case {
    float v;
    int width, decimals;
    const char* text;
  };
  const Case cases[] = {
      {0.0f, 2, 0, "0."},          {1000.0f, 6, 1, "1000.0"},   {999.96f, 6, 1, "1000.0"},
      {0.5f, 6, 4, "0.5000"},      {0.05f, 7, 5, "0.05000"},    {-12.34f, 6, 2, "-12.34"},
      {1234.5f, 6, 1, "1234.5"},   {1.234f, 5, 3, "1.234"},     {999.9f, 5, 1, "999.9"},
      {123456.0f, 8, 1, "123456.0"}, {-0.00023f, 10, 7, "-0.0002300"}, {9.9999f, 5, 2, "10.00"},
  };
  for (const Case& c : cases) {
    const RealField f = RealFieldFormat(c.v);
    EXPECT_EQ(f.width, c.width) << c.v;
    EXPECT_EQ(f.decimals, c.decimals) << c.v;
    EXPECT_EQ(XMLReal(c.v), c.text);
    // The field is exactly as wide as the text: no padding.
    EXPECT_EQ(static_cast<int>(XMLReal(c.v).size()), f.width) << c.v;
  }
  EXPECT_EQ(XMLReal(-0.0f), "0.");
  EXPECT_EQ(XMLReal(std::numeric_limits<float>::quiet_NaN()), "NaN");
  EXPECT_EQ(XMLReal(-std::numeric_limits<float>::infinity()), "-INF");
  // An exact tie rounds away from zero.
  EXPECT_EQ(XMLReal(1.0625f), "1.063");
}

TEST(XMLWriting, DigitCount) {
  EXPECT_EQ(DigitCount(0), 1);
  EXPECT_EQ(DigitCount(9), 1);
  EXPECT_EQ(DigitCount(10), 2);
  EXPECT_EQ(DigitCount(999), 3);
  EXPECT_EQ(DigitCount(1000), 4);
  EXPECT_EQ(DigitCount(-5), 2);
  EXPECT_EQ(XMLInteger(1000), "1000");
  EXPECT_EQ(XMLInteger(0), "0");
}

TEST(XMLWriting, TheTwoToleranceRules) {
  // Plain values keep the field of the value and print zero in it.
  EXPECT_EQ(XMLValueLine(12, "Depth", 0.00023f, "m", 0.001f), "            <Depth value=\"0.0000000\" units=\"m\"/>");
  EXPECT_EQ(XMLValueLine(0, "Depth", 0.001f, "m", 0.001f), "<Depth value=\"0.000000\" units=\"m\"/>");  // at it
  EXPECT_EQ(XMLValueLine(0, "Depth", 0.0011f, "m", 0.001f), "<Depth value=\"0.001100\" units=\"m\"/>");
  // Axis values are zeroed first and print the zero's own form.
  EXPECT_EQ(XMLAxisValueLine(4, "Force", "X", 0.00023f, "kN", 0.001f), "    <Force axis=\"X\" value=\"0.\" units=\"kN\"/>");
  EXPECT_EQ(XMLAxisValueLine(0, "Force", "X", -0.00023f, "kN", 0.0f), "<Force axis=\"X\" value=\"-0.0002300\" units=\"kN\"/>");
  // The limit prints as it stands; yield closes the line.
  EXPECT_EQ(XMLAxisValueLimitLine(0, "Normal-Stress", "Y", 0.004f, 12.5f, "kPa", true, 0.01f),
            "<Normal-Stress axis=\"Y\" value=\"0.\" limit=\"12.50\" units=\"kPa\" yield=\"true\"/>");
  EXPECT_EQ(XMLValueLimitLine(0, "Shear-Stress", 0.004f, 0.0f, "kPa", false, 0.01f),
            "<Shear-Stress value=\"0.000000\" limit=\"0.\" units=\"kPa\" yield=\"false\"/>");
  // No units attribute when there are none.
  EXPECT_EQ(XMLValueLine(0, "Ks", 0.8f, {}, 0.01f), "<Ks value=\"0.8000\"/>");
  EXPECT_EQ(XMLValueLimitLine(0, "S", 5.0f, 6.0f, {}, false, 0.0f), "<S value=\"5.000\" limit=\"6.000\" yield=\"false\"/>");
}

TEST(XMLWriting, TextThatAParserGivesBackUnchanged) {
  EXPECT_EQ(XMLText("Jetty 4"), "Jetty 4");
  EXPECT_EQ(XMLText("A<B & C"), "<![CDATA[A<B & C]]>");
  EXPECT_EQ(XMLText("x]]>y"), "<![CDATA[x]]]]><![CDATA[>y]]>");
  EXPECT_EQ(XMLText("tab\there"), "tab\there");
  EXPECT_EQ(XMLText(std::string("a\x01" "b\rc", 5)), "a b c");
  EXPECT_EQ(XMLText("caf\xE9"), "caf\xE9");  // Latin-1 passes as it is
}

}  // namespace
}  // namespace quellon
