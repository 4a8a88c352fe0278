// The LOG of a whole non-linear run, as a host started it through the C API: every line
// between the dated head and closing lines, in order, with the values of the trace lines
// held against what the host's callbacks received. The run stops at the axial capacity
// of the group before its last increment.
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include "quellon.h"
#include "../common/engine_support.h"
#include "../common/xml_xpath.h"

namespace quellon {
namespace {

using testing::sent;

constexpr int kPiles = 3, kIncrements = 4, kAxialRows = 3 * kPiles;  // two elements and the base

// Three piles of two elements in soft clay: the first vertical, the other two raked
// alike, so that the raked soil block is built once and then reused. Flags 9 and 17
// dump to the TXT report, 25 sends the cap. The load acts off the centre of the group.
void EnterModel() {
  int flags[40] = {};
  for (int f : {9, 17, 25}) flags[f - 1] = 1;
  ASSERT_EQ(QuellonSetProjectFlags(flags, 40), 1);
  ASSERT_EQ(QuellonSetNumberOfLoadIncrements(kIncrements), 1);
  ASSERT_EQ(QuellonSetProjectHyperbolicFactors(0.5, 0.5, 0.5, 0.5), 1);
  ASSERT_EQ(QuellonSetActions(30.0, 0.0, 2400.0, 0.0, 0.0, 0.0, 0.0, 0.0), 1);
  ASSERT_EQ(QuellonSetBoreholeNumberOfLayers(1) & QuellonSetBoreholeLayerAveraging(1), 1);
  ASSERT_EQ(QuellonSetBoreholeLayerStiffness(1, 10000.0, 500.0, 8000.0, 400.0, 0.45), 1);
  ASSERT_EQ(QuellonSetGroundType(1, 2) & QuellonSetGroundWeightDensity(1, 17.0), 1);
  ASSERT_EQ(QuellonSetSoilUndrainedShearStrength(1, 20.0, 2.0) & QuellonSetSoilUndrainedInterfaceParameter(1, 0.5), 1);
  ASSERT_EQ(QuellonSetNumberOfPiles(kPiles) & QuellonSetNumberOfPileElements(2), 1);
  for (int p = 1; p <= kPiles; ++p) {
    ASSERT_EQ(QuellonSetPileCoordinates(p, 1.5 * (p - 1), 0.0, 0.0) & QuellonSetPileDimensions(p, 8.0, 0.5, 0.0, 0.5) &
                  QuellonSetPileRake(p, p == 1 ? 0.0 : 4.0, 0.0) &
                  QuellonSetPileReinforcedSectionProperties(p, 0.0, 5000.0, 100.0, 100.0, 80.0) &
                  QuellonSetPileUnreinforcedSectionProperties(p, 5000.0, 100.0, 100.0, 80.0),
              1);
  }
}

// A value in a fixed field; with width 0 as the engine's minimal form, no zero before
// the point of a magnitude below 1 (".031954").
std::string Fixed(double v, int width, int decimals) {
  char text[64];
  std::snprintf(text, sizeof text, "%*.*f", width, decimals, v);
  std::string s = text;
  const std::size_t zero = s[0] == '-' ? 1 : 0;
  if (width == 0 && s.compare(zero, 2, "0.") == 0) s.erase(zero, 1);
  return s;
}

// The lines of increment i as the trace and value lines tell it, with `yields`, the
// element lines that the softening wrote in it.
std::vector<std::string> IncrementLines(int i, const std::vector<std::string>& yields) {
  const std::size_t k = static_cast<std::size_t>(i - 1);
  const std::string n = std::to_string(i);
  std::vector<std::string> lines = {"RunAnalysis, line 292", "CreateIncrement: " + n, "Using LU decompostion...",
                                    "PrintMatrix, line 23", "[Info] Sending force vs displacement stiffnesses..."};
  const auto& s = sent.stiffness[k];
  for (std::size_t a = 0; a < 3; ++a)
    lines.push_back("GRMAT(GRMAT(ConvertAxis(" + std::to_string(a + 1) + "), ConvertAxis(" + std::to_string(a + 1) +
                    ")) = " + Fixed(s[4 * a] / 1e6f, 0, 6));
  std::string text = "SendForceDisplacementStiffnesses (GN/m): [" + n + "]";
  for (float v : s) text += "  " + Fixed(v / 1e6f, 9, 3);
  lines.insert(lines.end(), {"CalcStiffnessDisplsStressesLoads, line 192", text, "[Info] Sending stiffness matrix...",
                             "PrintMatrix, line 64", "PrintMatrix, line 64", "PrintMatrix, line 64",
                             "PrintMatrix, line 64"});
  lines.insert(lines.end(), yields.begin(), yields.end());
  text = "SendPileCapLoads (kN/kNm): " + n;
  for (float v : sent.loads[k]) text += "  " + Fixed(v, 9, 1);
  lines.insert(lines.end(), {"[Info] Sending pile cap loads...", "Update, line 234", text,
                             "[Info] Sending pile cap displacements...", "Update, line 273"});
  text = "SendPileCapDisplacements (mm/mrad): " + n;
  for (float v : sent.moves[k]) text += "  " + Fixed(v * 1000.0f, 9, 3);
  lines.push_back(text);
  return lines;
}

TEST(LogRun, EveryLineOfARunToTheAxialCapacityInItsOrder) {
  ASSERT_EQ(TheEngine().foundation.NumberOfPiles, 0) << "another test left a model behind";
  // The model and the callbacks come first, so that the LOG holds the run alone.
  EnterModel();
  testing::SetHostCallbacks(true);
  const testing::TempFile log_file(".log"), xml_file(".xml"), txt_file(".txt");
  const std::string &log = log_file.path(), &xml = xml_file.path(), &txt = txt_file.path();
  ASSERT_EQ(QuellonCreateLOGFile(log.c_str()), 1);
  ::testing::internal::CaptureStdout();
  const int result = QuellonRunAnalysis2(xml.c_str(), txt.c_str());
  ::testing::internal::GetCapturedStdout();
  QuellonCloseAllFiles();
  testing::SetHostCallbacks(false);
  ASSERT_EQ(result, 1);
  EXPECT_TRUE(qtest::XmlDoc(xml).ok());  // the document of a run stopped early parses

  const std::vector<std::string> lines = testing::ReadLines(log);
  ASSERT_GE(lines.size(), 8u);
  const std::string ends = lines[0] + "|" + lines[3] + "|" + lines[4] + "|" + lines[lines.size() - 2] + "|" + lines.back();
  const std::regex dated(R"(QuellonEngine v3\.23\|LOG file created on (\d\d/){2}\d{4} at (\d\d:){2}\d\d\|\|\|)"
                         R"(LOG file closed at (\d\d/){2}\d{4} (\d\d:){2}\d\d)");
  EXPECT_TRUE(std::regex_match(ends, dated)) << ends;
  const std::vector<std::string> body(lines.begin() + 5, lines.end() - 2);

  // The element lines of the softening by increment: each axial row yields once, and
  // the run ends at the increment that yields the last of them.
  std::vector<std::vector<std::string>> yields;
  std::set<int> rows;
  std::smatch m;
  for (const std::string& l : body) {
    if (l.rfind("CreateIncrement: ", 0) == 0) yields.emplace_back();
    if (!std::regex_match(l, m, std::regex(R"(Element (\d+) yielded)"))) continue;
    ASSERT_FALSE(yields.empty()) << l;
    yields.back().push_back(l);
    const int r = std::stoi(m[1].str());
    EXPECT_TRUE(rows.insert(r).second && r >= 1 && r <= kAxialRows) << l;
  }
  EXPECT_EQ(static_cast<int>(rows.size()), kAxialRows);
  const std::size_t stop = yields.size();
  ASSERT_TRUE(stop >= 2 && stop < kIncrements) << "the capacity must end the run early, after some increments";
  ASSERT_TRUE(sent.stiffness.size() == stop && sent.loads.size() == stop && sent.moves.size() == stop);

  std::vector<std::string> expected = {
      "Writing results to XML output file: " + xml, "Writing results to TXT output file: " + txt,
      "[Info] Running the boundary element analysis...", "[Info] Writing input data to TXT output file...",
      "[Info] Finished writing input data to TXT output file", "[Info] Writing data to XML output file...",
      "[Info] Assembling flexibility matrices...",
      // Pile 2 is the first raked pile; pile 3 reuses its block.
      "BuildTransverseXSoilFlexibilityMatrix, line 27", "BuildTransverseYSoilFlexibilityMatrix, line 26"};
  for (std::size_t i = 1; i <= stop; ++i) {
    const std::vector<std::string> increment = IncrementLines(static_cast<int>(i), yields[i - 1]);
    expected.insert(expected.end(), increment.begin(), increment.end());
    if (i < stop) expected.push_back("Increment " + std::to_string(i));
  }
  expected.insert(expected.end(),
                  {"Axial elements yielded = " + std::to_string(kAxialRows) + "/" + std::to_string(kAxialRows),
                   "[Error] Ultimate axial capacity of single pile exceeded after increment " + std::to_string(stop),
                   "[Info] Finished writing data to XML output file", "[Info] Releasing memory ...",
                   "Finished running the boundary element analysis (success)",
                   "[Info] Finished running the boundary element analysis (success)", "[Info] Closing all files ...",
                   "[Info] Closed XML output file", "[Info] Closed TXT output file"});
  // Line by line, so that a failure names the first place where the LOG departs.
  for (std::size_t k = 0; k < expected.size() && k < body.size(); ++k)
    ASSERT_EQ(body[k], expected[k]) << "LOG body line " << k + 1;
  EXPECT_EQ(body.size(), expected.size());
}

}  // namespace
}  // namespace quellon
