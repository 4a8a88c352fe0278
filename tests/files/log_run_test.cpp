// The LOG of a whole non-linear run, as a host started it through the C API: every line
// between the dated head and closing lines, in order, with the values of the trace lines
// held against what the host's callbacks received. The run stops at the axial capacity
// of the group before its last increment.
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include "engine/engine.h"
#include "engine/model_tables.h"
#include "quellon.h"
#include "txt_test_support.h"

namespace quellon {
namespace {

struct Sent {
  std::vector<std::array<float, 9>> stiffness;  // per increment
  std::vector<std::array<float, 6>> loads, moves;
} sent;

void RegisterCallbacks() {
  QuellonSetCreateIncrementCallback([](const int*) {});
  QuellonSetStiffnessMatrixCallback([](const float*) {});
  QuellonSetForceDisplacementStiffnessesCallback([](const float* a, const float* b, const float* c, const float* d,
                                                    const float* f, const float* g, const float* h, const float* i,
                                                    const float* j) {
    sent.stiffness.push_back({*a, *b, *c, *d, *f, *g, *h, *i, *j});
  });
  QuellonSetPileCapLoadsCallback([](const float* a, const float* b, const float* c, const float* d, const float* f,
                                    const float* g) { sent.loads.push_back({*a, *b, *c, *d, *f, *g}); });
  QuellonSetPileCapDisplacementsCallback([](const float* a, const float* b, const float* c, const float* d,
                                            const float* f, const float* g) {
    sent.moves.push_back({*a, *b, *c, *d, *f, *g});
  });
}

constexpr int kPiles = 3, kElements = 2, kIncrements = 4;
constexpr int kAxialRows = (kElements + 1) * kPiles;

// Three piles of two elements in soft clay: the first vertical, the other two raked
// alike, so that the raked soil block is built once and then reused. Flags: the
// boundary condition vectors (9) and the incremental displacements (17) go to the TXT
// report, the cap block (25) to the XML output. The load acts at X = 0, off the centre
// of the group, which loads the first pile most.
void EnterModel() {
  int flags[40] = {};
  for (int f : {9, 17, 25}) flags[f - 1] = 1;
  ASSERT_EQ(QuellonSetProjectFlags(flags, 40), 1);
  ASSERT_EQ(QuellonSetNumberOfLoadIncrements(kIncrements), 1);
  ASSERT_EQ(QuellonSetProjectHyperbolicFactors(0.5, 0.5, 0.5, 0.5), 1);
  ASSERT_EQ(QuellonSetActions(30.0, 0.0, 2400.0, 0.0, 0.0, 0.0, 0.0, 0.0), 1);
  ASSERT_EQ(QuellonSetBoreholeNumberOfLayers(1), 1);
  ASSERT_EQ(QuellonSetBoreholeLayerAveraging(1), 1);
  ASSERT_EQ(QuellonSetBoreholeLayerStiffness(1, 10000.0, 500.0, 8000.0, 400.0, 0.45), 1);
  ASSERT_EQ(QuellonSetGroundType(1, 2), 1);
  ASSERT_EQ(QuellonSetGroundWeightDensity(1, 17.0), 1);
  ASSERT_EQ(QuellonSetSoilUndrainedShearStrength(1, 20.0, 2.0), 1);
  ASSERT_EQ(QuellonSetSoilUndrainedInterfaceParameter(1, 0.5), 1);
  ASSERT_EQ(QuellonSetNumberOfPiles(kPiles), 1);
  ASSERT_EQ(QuellonSetNumberOfPileElements(kElements), 1);
  for (int p = 1; p <= kPiles; ++p) {
    ASSERT_EQ(QuellonSetPileCoordinates(p, 1.5 * (p - 1), 0.0, 0.0), 1);
    ASSERT_EQ(QuellonSetPileDimensions(p, 8.0, 0.5, 0.0, 0.5), 1);
    ASSERT_EQ(QuellonSetPileRake(p, p == 1 ? 0.0 : 4.0, 0.0), 1);
    ASSERT_EQ(QuellonSetPileReinforcedSectionProperties(p, 0.0, 5000.0, 100.0, 100.0, 80.0), 1);
    ASSERT_EQ(QuellonSetPileUnreinforcedSectionProperties(p, 5000.0, 100.0, 100.0, 80.0), 1);
  }
}

std::string Fixed(double v, int width, int decimals) {
  char text[64];
  std::snprintf(text, sizeof text, "%*.*f", width, decimals, v);
  return text;
}

// The same with no padding, and, as the engine's minimal fixed form has it, no zero before
// the point of a magnitude below 1 (".031954").
std::string MinimalFixed(double v, int decimals) {
  std::string text = Fixed(v, 0, decimals);
  const std::size_t zero = text[0] == '-' ? 1 : 0;
  if (text.compare(zero, 2, "0.") == 0) text.erase(zero, 1);
  return text;
}

// The lines of one increment as the trace and value lines tell it, up to the reports of
// Update; `yields` are the element lines that the softening wrote in this increment.
std::vector<std::string> IncrementLines(int i, const std::vector<std::string>& yields) {
  const std::size_t k = static_cast<std::size_t>(i - 1);
  const std::string n = std::to_string(i);
  std::vector<std::string> lines = {"RunAnalysis, line 292", "CreateIncrement: " + n, "Using LU decompostion...",
                                    "PrintMatrix, line 23", "[Info] Sending force vs displacement stiffnesses..."};
  const auto& s = sent.stiffness[k];
  for (int a = 1; a <= 3; ++a) {
    const std::string axis = std::to_string(a);
    lines.push_back("GRMAT(GRMAT(ConvertAxis(" + axis + "), ConvertAxis(" + axis + ")) = " +
                    MinimalFixed(s[static_cast<std::size_t>(4 * (a - 1))] / 1e6f, 6));
  }
  lines.push_back("CalcStiffnessDisplsStressesLoads, line 192");
  std::string text = "SendForceDisplacementStiffnesses (GN/m): [" + n + "]";
  for (float v : s) text += "  " + Fixed(v / 1e6f, 9, 3);
  lines.push_back(text);
  lines.push_back("[Info] Sending stiffness matrix...");
  for (int v = 0; v < 4; ++v) lines.push_back("PrintMatrix, line 64");
  lines.insert(lines.end(), yields.begin(), yields.end());
  lines.push_back("[Info] Sending pile cap loads...");
  lines.push_back("Update, line 234");
  text = "SendPileCapLoads (kN/kNm): " + n;
  for (float v : sent.loads[k]) text += "  " + Fixed(v, 9, 1);
  lines.push_back(text);
  lines.push_back("[Info] Sending pile cap displacements...");
  lines.push_back("Update, line 273");
  text = "SendPileCapDisplacements (mm/mrad): " + n;
  for (float v : sent.moves[k]) text += "  " + Fixed(v * 1000.0f, 9, 3);
  lines.push_back(text);
  return lines;
}

class LogRun : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(TheEngine().foundation.NumberOfPiles, 0) << "another test left a model behind";
    sent = Sent{};
  }
  void TearDown() override {
    QuellonCloseAllFiles();
    QuellonSetCreateIncrementCallback(nullptr);
    QuellonSetStiffnessMatrixCallback(nullptr);
    QuellonSetForceDisplacementStiffnessesCallback(nullptr);
    QuellonSetPileCapLoadsCallback(nullptr);
    QuellonSetPileCapDisplacementsCallback(nullptr);
    Engine& e = TheEngine();
    ReleaseFoundation(e);
    ReleaseBorehole(e);
    ResetActions(e);
    ResetProject(e);
  }
};

TEST_F(LogRun, EveryLineOfARunToTheAxialCapacityInItsOrder) {
  // The model and the callbacks come first, so that the LOG holds the run alone.
  EnterModel();
  RegisterCallbacks();
  const testing::TempFile log_file(".log"), xml_file(".xml"), txt_file(".txt");
  const std::string &log = log_file.path(), &xml = xml_file.path(), &txt = txt_file.path();
  ASSERT_EQ(QuellonCreateLOGFile(log.c_str()), 1);
  ::testing::internal::CaptureStdout();
  ASSERT_EQ(QuellonRunAnalysis2(xml.c_str(), txt.c_str()), 1);
  ::testing::internal::GetCapturedStdout();
  QuellonCloseAllFiles();

  // The XML document of a run stopped early by the capacity still parses.
  EXPECT_TRUE(testing::ParsedXML(xml).ok());
  const std::vector<std::string> lines = testing::ReadLines(log);
  ASSERT_GE(lines.size(), 8u);
  EXPECT_EQ(lines[0], "QuellonEngine v3.23");
  EXPECT_TRUE(std::regex_match(lines[3], std::regex(R"(LOG file created on \d\d/\d\d/\d{4} at \d\d:\d\d:\d\d)")));
  EXPECT_EQ(lines[4], "");
  EXPECT_EQ(lines[lines.size() - 2], "");
  EXPECT_TRUE(std::regex_match(lines.back(), std::regex(R"(LOG file closed at \d\d/\d\d/\d{4} \d\d:\d\d:\d\d)")));
  const std::vector<std::string> body(lines.begin() + 5, lines.end() - 2);

  // The element lines of the softening, by increment: each axial row of the group
  // yields once, and the run ends at the increment that yields the last of them.
  std::vector<std::vector<std::string>> yields;
  std::set<int> rows;
  const std::regex yielded(R"(Element (\d+) yielded)");
  for (const std::string& l : body) {
    if (l.rfind("CreateIncrement: ", 0) == 0) yields.emplace_back();
    std::smatch m;
    if (std::regex_match(l, m, yielded)) {
      ASSERT_FALSE(yields.empty()) << l;
      yields.back().push_back(l);
      const int r = std::atoi(m[1].str().c_str());
      EXPECT_TRUE(rows.insert(r).second) << l;
      EXPECT_TRUE(r >= 1 && r <= kAxialRows) << l;
    }
  }
  EXPECT_EQ(static_cast<int>(rows.size()), kAxialRows);
  const int stop = static_cast<int>(yields.size());
  ASSERT_GE(stop, 2) << "the capacity must come after some increments";
  ASSERT_LT(stop, kIncrements) << "the capacity must end the run early";
  ASSERT_EQ(sent.stiffness.size(), static_cast<std::size_t>(stop));
  ASSERT_EQ(sent.loads.size(), static_cast<std::size_t>(stop));
  ASSERT_EQ(sent.moves.size(), static_cast<std::size_t>(stop));

  std::vector<std::string> expected = {
      "Writing results to XML output file: " + xml, "Writing results to TXT output file: " + txt,
      "[Info] Running the boundary element analysis...", "[Info] Writing input data to TXT output file...",
      "[Info] Finished writing input data to TXT output file", "[Info] Writing data to XML output file...",
      "[Info] Assembling flexibility matrices...",
      // Pile 2 is the first raked pile; pile 3 reuses its block.
      "BuildTransverseXSoilFlexibilityMatrix, line 27", "BuildTransverseYSoilFlexibilityMatrix, line 26"};
  for (int i = 1; i <= stop; ++i) {
    const std::vector<std::string> increment = IncrementLines(i, yields[static_cast<std::size_t>(i - 1)]);
    expected.insert(expected.end(), increment.begin(), increment.end());
    if (i < stop) expected.push_back("Increment " + std::to_string(i));
  }
  const std::string last = std::to_string(stop);
  for (const std::string& l :
       {"Axial elements yielded = " + std::to_string(kAxialRows) + "/" + std::to_string(kAxialRows),
        "[Error] Ultimate axial capacity of single pile exceeded after increment " + last,
        std::string("[Info] Finished writing data to XML output file"), std::string("[Info] Releasing memory ..."),
        std::string("Finished running the boundary element analysis (success)"),
        std::string("[Info] Finished running the boundary element analysis (success)"),
        std::string("[Info] Closing all files ..."), std::string("[Info] Closed XML output file"),
        std::string("[Info] Closed TXT output file")})
    expected.push_back(l);

  // Line by line, so that a failure names the first place where the LOG departs.
  for (std::size_t k = 0; k < expected.size() && k < body.size(); ++k)
    ASSERT_EQ(body[k], expected[k]) << "LOG body line " << k + 1;
  EXPECT_EQ(body.size(), expected.size());
}

}  // namespace
}  // namespace quellon
