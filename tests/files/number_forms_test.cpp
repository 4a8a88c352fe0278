// The number forms of the TXT report, the text model file and the XML output, on the
// values where they break: signs, zero and minus zero, carries into the exponent or the
// next digit, fields too narrow, values that are not finite.
#include "files/number_forms.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "files/text_model_numbers.h"
#include "files/xml_writing.h"

namespace quellon {
namespace {

TEST(NumberForms, ReportFormsOnEdgeValues) {
  const float inf = std::numeric_limits<float>::infinity();
  const std::pair<std::string, std::string> cases[] = {
      {FormatFix(12.0, 0, 0), "12."}, {FormatFix(-0.5, 0, 2), "-.50"}, {FormatFix(0.5, 6, 2), "  0.50"},
      {FormatFix(0.5, 3, 2), ".50"}, {FormatFix(123456.0, 5, 1), "*****"}, {FormatFix(2.555f, 0, 2), "2.56"},
      {FormatFix(-0.0, 6, 2), "  0.00"}, {FormatFix(-0.004, 6, 2), " -0.00"},
      {FormatFix(-99999.96f, 8, 1), "********"}, {FormatFix(std::nanf(""), 6, 2), "******"},
      {FormatFix(250.0f, 6, 0), "  250."}, {FormatSci(-0.000123, 10, 2), " -1.23E-04"},
      {FormatSci(0.0, 10, 2), "  0.00E+00"}, {FormatSci(-0.0f, 10, 2), "  0.00E+00"},
      {FormatSci(9.996f, 10, 2), "  1.00E+01"}, {FormatSci(1e-6f, 10, 2), "  1.00E-06"},
      {FormatSci(-1.0f, 9, 2), "-1.00E+00"}, {FormatSci(-1.0f, 8, 2), "********"},
      {FormatSci(inf, 10, 2), "**********"}, {FormatSci(1500.0f, 8, 0), "  2.E+03"},
      {FormatFrac(-123.0, 10, 2), " -0.12E+03"}, {FormatFrac(999.0, 10, 2), "  0.10E+04"},
      {FormatFrac(0.09996f, 10, 2), "  0.10E+00"}, {FormatFrac(1e-6f, 10, 2), "  0.10E-05"},
      {FormatFrac(-0.0f, 10, 2), "  0.00E+00"}, {FormatFrac(-123.0, 8, 2), "-.12E+03"},
      {FormatFrac(-123.0, 7, 2), "*******"}, {FormatFrac(1500.0f, 8, 0), " 0.2E+04"}, {FormatInt(42, 5), "   42"},
      {FormatInt(-100, 3), "***"}, {FormatIntPadded(7, 2), "07"}, {FormatIntPadded(-5, 4), "****"},
  };
  for (const auto& [got, want] : cases) EXPECT_EQ(got, want);
}

TEST(NumberForms, TextModelTrimmedAndFixedForms) {
  const std::pair<std::string, std::string> cases[] = {
      {FormatTrimmed(12.0f, 2), "12."}, {FormatTrimmed(-0.0f, 1), "0."}, {FormatTrimmed(-50.5f, 2), "-50.5"},
      {FormatTrimmed(0.125f, 2), "0.13"}, {FormatTrimmed(2.3f, 3), "2.3"}, {FormatTrimmed(57.7f, 2), "57.7"},
      {FormatTrimmed(2.555f, 2), "2.56"}, {FormatTrimmed(-0.25f, 2), "-0.25"}, {FormatTrimmed(2.996f, 2), "3.00"},
      {FormatTrimmed(9.9999f, 2), "10.00"}, {FormatTrimmed(1.2049f, 2), "1.20"}, {FormatTrimmed(0.005f, 2), "0.00"},
      {FormatTrimmed(-0.0049f, 2), "0.00"}, {FormatTrimmed(0.3f, 3), "0.300"}, {FormatTrimmed(-0.2f, 3), "-0.2"},
      {FormatFixed(0.5f, 2), ".50"}, {FormatFixed(-0.5f, 2), "-.50"}, {FormatFixed(-0.0f, 2), ".00"},
      {FormatFixed(30.0f, 1), "30.0"}, {FormatFixed(148.5f, 0), "149."}, {FormatFixed(-148.5f, 0), "-149."},
      {FormatFixed(0.125f, 2), ".13"}, {FormatFixed(-0.001f, 2), ".00"}, {FormatFixed(1200.0f, 2), "1200.00"},
  };
  for (const auto& [got, want] : cases) EXPECT_EQ(got, want);
}

TEST(NumberForms, XMLRealFieldsAndTexts) {
  struct Case {
    float v;
    int width, decimals;
    const char* text;
  };
  const Case cases[] = {
      {0.0f, 2, 0, "0."},           {1000.0f, 6, 1, "1000.0"},   {999.96f, 6, 1, "1000.0"},
      {0.05f, 7, 5, "0.05000"},     {-12.34f, 6, 2, "-12.34"},   {999.9f, 5, 1, "999.9"},
      {123456.0f, 8, 1, "123456.0"}, {-0.00023f, 10, 7, "-0.0002300"}, {9.9999f, 5, 2, "10.00"},
  };
  for (const Case& c : cases) {
    const RealField f = RealFieldFormat(c.v);
    EXPECT_EQ(f.width, c.width) << c.v;
    EXPECT_EQ(f.decimals, c.decimals) << c.v;
    EXPECT_EQ(XMLReal(c.v), c.text);
  }
  EXPECT_EQ(XMLReal(-0.0f), "0.");
  EXPECT_EQ(XMLReal(std::numeric_limits<float>::quiet_NaN()), "NaN");
  EXPECT_EQ(XMLReal(1.0625f), "1.063");  // an exact tie rounds away from zero
  // Below the tolerance a plain value keeps its field, an axis value takes the zero's.
  EXPECT_EQ(XMLValueLine(2, "Depth", 0.00023f, "m", 0.001f), "  <Depth value=\"0.0000000\" units=\"m\"/>");
  EXPECT_EQ(XMLAxisValueLine(0, "Force", "X", 0.00023f, "kN", 0.001f), "<Force axis=\"X\" value=\"0.\" units=\"kN\"/>");
  EXPECT_EQ(XMLText("x]]>y"), "<![CDATA[x]]]]><![CDATA[>y]]>");
  EXPECT_EQ(XMLText(std::string("a\x01" "b\rc", 5)), "a b c");
}

}  // namespace
}  // namespace quellon
