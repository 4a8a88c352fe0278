// The layout of a written TMK file: its lines in order, their number forms, and the
// bytes of the file (Latin-1, CR LF).
#include <gtest/gtest.h>

#include <algorithm>

#include "engine/engine.h"
#include "engine/file_units.h"
#include "files/text_model.h"
#include "text_model_test_support.h"

namespace quellon {
namespace {

using test::FillSampleModel;
using test::ReadBytes;
using test::ScratchPath;
using test::SplitLines;

std::string WriteModel(Engine& e) {
  const std::string path = ScratchPath("model.tmk");
  EXPECT_EQ(CreateTMKFile(e, path), 1);
  CloseTMKFile(e);
  return ReadBytes(path);
}

const std::vector<std::string> kNonLinearSample = {
    "[Version]",
    "3.23",
    "[Name]",
    "Jetty 4 \xE9tage, bent B",
    "[Notes]",
    "Sample model for the file tests",
    "[Date]",
    "2024-03-07",
    "[Filename]",
    "C:\\jobs\\jetty4.tmw",
    "[Flags]",
    "1100000000000001000000001000000000000100",
    "[No. piles/no. elements/no. increments]",
    "3 4 5 1",
    "[Pile Name]",
    "[Number/Length(m)/Ds(m)/Do(m)/Db(m)/Xrake(\xB0)/Yrake(\xB0)/X(m)/Y(m)/Z(m)/EA(MN)/EIx(MNm^2)/EIy(MNm^2)/"
    "GJ(MNm^2)/ReinforcedLength(m)/EA+(MN)/EIx+(MNm^2)/EIy+(MNm^2)/GJ+(MNm^2)]",
    "Pile A",
    "1 12. 0.6 0. 0.6 0. 0. -1.5 0. 0.25 2500. 75. 75. 57.7 8.50 1200.00 36.00 36.00 27.70",
    "Pile B",
    "2 12. 0.6 0. 0.6 0. 0. 0. 0. 0.25 2500. 75. 75. 57.7 0 0 0 0 0",
    "Pile C",
    "3 12. 0.6 0.45 0.6 5. -5. 1.5 0. 0.25 2500. 75. 75. 57.7 0 0 0 0 0",
    "[Pile interaction flag: 1 = infinite; 2 = auto; 3 = custom]",
    "3",
    "[Pile interaction distance]",
    "12.5",
    "[Depth to rigid layer (m)]",
    "30.",
    "[Overburden (kPa)/Elastic unloading flag: 0 = off; 1 = on]",
    "12.5 1",
    "[No. layers/Layer averaging flag: 1 = Poulos; 2 = Yamashita]",
    "4 2",
    "[Layer Name]",
    "[Depth(m)/Ev(kPa)/dEv(kN/m^3)/Eh(kPa)/dEh(kN/m^3)/Poisson]",
    "Sand",
    "0. 20000. 1000. 15000. 750.5 0.3",
    "Clay",
    "5. 40000. 1000. 30000. 750.5 0.3",
    "Mudstone",
    "10. 60000. 1000. 45000. 750.5 0.3",
    "Fill",
    "15. 80000. 1000. 60000. 750.5 0.3",
    "[Soil Name]",
    "[Type(1 = coarse soil)/weight(kN/m^3)/max_qs(kPa)/max_qb(kPa)/phi(deg)/delta(deg)/Ks/-/-/-]",
    "[Type(2 = fine soil)/weight(kN/m^3)/max_qs(kPa)/max_qb(kPa)/cu(kPa)/dcu(kN/m^3)/alpha/-/-/-]",
    "[Type(3 = rock)/weight(kN/m^3)/max_qs(kPa)/max_qb(kPa)/UCS(MPa)/k1/k2/k3/k4/k5]",
    "[Type(4 = direct)/weight(kN/m^3)/max_qs(kPa)/max_qb(kPa)/qs(kPa)/qb(kPa)/qlat(kPa)/-/-/-]",
    "Loose sand",
    "1 18.5 0. 0. 32. 24.5 0.8 0 0 0",
    "Soft clay",
    "2 18.5 80. 0. 25. 2.5 0.6 0 0 0",
    "Weak rock",
    "3 18.5 0. 9000. 5000. 0.5 0.5 1.25 0.75 1.5",
    "Direct values",
    "4 18.5 0. 0. 150. 5000. 300. 0 0 0",
    "[Nq flag: 2 = custom; 1 = auto/Nq(-)]",
    "2 30.0",
    "[Stress limits: skin friction (kPa)/end bearing (kPa)]",
    "150. 4500.",
    "[Hyperbolic factors: shaft/base/lateral/torsion]",
    ".50 .90 .25 .00",
    "[Free-standing length (m)]",
    "1.25",
    "[Fx(kN)/Fy(kN)/Fz(kN)/Mx(kNm)/My(kNm)/Mz(kNm)/X(m)/Y(m)]",
    "100. -50.5 2500. 10. -20.25 5. 0.125 -0.5",
};

TEST(TextModelWriter, NonLinearModelGivesEveryLineInOrder) {
  Engine e;
  FillSampleModel(e, 5);
  const std::string bytes = WriteModel(e);
  EXPECT_EQ(SplitLines(bytes), kNonLinearSample);
  // Every line ends in CR LF; the degree signs and the accented name are single bytes.
  EXPECT_EQ(std::count(bytes.begin(), bytes.end(), '\n'), static_cast<long>(kNonLinearSample.size()));
  EXPECT_EQ(std::count(bytes.begin(), bytes.end(), '\r'), static_cast<long>(kNonLinearSample.size()));
  EXPECT_EQ(bytes.find("\r\n\r\n"), std::string::npos);
  EXPECT_EQ(std::count(bytes.begin(), bytes.end(), '\xB0'), 2);
  EXPECT_EQ(bytes.find("\xC2\xB0"), std::string::npos);
}

TEST(TextModelWriter, LinearModelLeavesOutTheNonLinearLines) {
  Engine e;
  FillSampleModel(e, 1);
  e.project.InteractionFlag = 2;
  const auto lines = SplitLines(WriteModel(e));
  std::vector<std::string> expected;
  for (const std::string& l : kNonLinearSample) {
    if (l == "[Pile interaction distance]" || l == "12.5") continue;
    expected.push_back(l);
  }
  expected[13] = "3 4 1 1";
  expected[23] = "2";
  // Lines 23, 24 and 29 to 39 go: overburden, the ground rows, Nq, limits, factors.
  auto erase = [&](const std::string& from, const std::string& to) {
    auto a = std::find(expected.begin(), expected.end(), from);
    auto b = std::find(expected.begin(), expected.end(), to);
    expected.erase(a, b);
  };
  erase("[Overburden (kPa)/Elastic unloading flag: 0 = off; 1 = on]",
        "[No. layers/Layer averaging flag: 1 = Poulos; 2 = Yamashita]");
  erase("[Soil Name]", "[Free-standing length (m)]");
  EXPECT_EQ(lines, expected);
}

TEST(TextModelWriter, ExcludedCommentsTakeTheNameLinesAlongAndEndInZero) {
  Engine e;
  FillSampleModel(e, 5);
  e.project.ExcludeTMKComments = 1;
  const auto lines = SplitLines(WriteModel(e));
  std::vector<std::string> expected;
  for (const std::string& l : kNonLinearSample) {
    const bool name_line = l.rfind("Pile ", 0) == 0 || l == "Sand" || l == "Clay" || l == "Mudstone" || l == "Fill" ||
                           l == "Loose sand" || l == "Soft clay" || l == "Weak rock" || l == "Direct values";
    if (l.front() != '[' && !name_line) expected.push_back(l);
  }
  expected.push_back("0");
  EXPECT_EQ(lines, expected);
  // The project texts stay.
  EXPECT_EQ(lines[1], "Jetty 4 \xE9tage, bent B");
  EXPECT_EQ(lines[4], "C:\\jobs\\jetty4.tmw");
}

TEST(TextModelWriter, AutomaticNqUnknownGroundTypeAndEmptyTexts) {
  Engine e;
  FillSampleModel(e, 5);
  e.project.AutoNq = 1;
  e.project.Name.clear();
  e.borehole.Layers(2).GroundType = 7;
  const auto lines = SplitLines(WriteModel(e));
  EXPECT_EQ(lines[3], "");
  auto nq = std::find(lines.begin(), lines.end(), "[Nq flag: 2 = custom; 1 = auto/Nq(-)]");
  ASSERT_NE(nq, lines.end());
  EXPECT_EQ(*(nq + 1), "1");
  // A ground of no known type keeps its name line and has no value line.
  auto clay = std::find(lines.begin(), lines.end(), "Soft clay");
  ASSERT_NE(clay, lines.end());
  EXPECT_EQ(*(clay + 1), "Weak rock");
}

TEST(TextModelWriter, UnitsAndMessages) {
  Engine e;
  FillSampleModel(e, 1);
  EXPECT_EQ(WriteTMKUnit(e, 0), 0);
  EXPECT_EQ(WriteTMKUnit(e, -8), 0);
  EXPECT_EQ(WriteTMKUnit(e, kTMKUnit), 0);  // nothing open on it

  static std::vector<std::string> messages;
  messages.clear();
  e.project.MessageCallback = [](const int*, const char* text) { messages.emplace_back(text); };
  test::ScopedLog log(e);
  const std::string first = ScratchPath("first.tmk");
  const std::string second = ScratchPath("second.tmk");
  ASSERT_EQ(CreateTMKFile(e, first), 1);
  EXPECT_EQ(e.project.TMKUnit, kTMKUnit);
  EXPECT_TRUE(e.files.tmk.is_open());  // the file stays open after the writing
  // A second file closes the first.
  ASSERT_EQ(CreateTMKFile(e, second), 1);
  EXPECT_EQ(CreateTMKFile(e, ScratchPath("no/such/dir/x.tmk")), 0);
  EXPECT_EQ(e.project.TMKUnit, 0);
  CloseTMKFile(e);  // nothing open: no message

  const std::vector<std::string> expected = {
      "Writing data to TMK file...", "Finished writing data to TMK output file", "Closed TMK file",
      "Writing data to TMK file...", "Finished writing data to TMK output file", "Closed TMK file"};
  EXPECT_EQ(messages, expected);
  const std::string text = log.Text();
  EXPECT_NE(text.find("Writing data to TMK file: " + first + "\r\n"), std::string::npos);
  EXPECT_NE(text.find("Writing data to TMK output file unit: 8\r\n"), std::string::npos);
  EXPECT_NE(text.find("Error opening TMK file: "), std::string::npos);
  EXPECT_FALSE(ReadBytes(first).empty());
}

}  // namespace
}  // namespace quellon
