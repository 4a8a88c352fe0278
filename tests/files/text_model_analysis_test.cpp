// A model entered through the C setters, kept as a text model file and read back, gives
// the same analysis as the model it came from: the same XML document byte for byte and
// the same numbers, bit for bit, in the host's callbacks. Runs on the engine behind the C
// API, as a host would, and leaves it as it found it.
#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include "engine/engine.h"
#include "engine/model_tables.h"
#include "quellon.h"
#include "text_model_test_support.h"

namespace quellon {
namespace {

// Every result the host is sent during one run, in order.
struct Sent {
  std::vector<int> increments;
  std::vector<std::array<float, 36>> grmat;
  std::vector<std::array<float, 6>> loads, moves;
  bool operator==(const Sent&) const = default;
} sent;

void RegisterCallbacks() {
  QuellonSetCreateIncrementCallback([](const int* i) { sent.increments.push_back(*i); });
  QuellonSetStiffnessMatrixCallback([](const float* g) {
    std::array<float, 36> m;
    std::copy(g, g + 36, m.begin());
    sent.grmat.push_back(m);
  });
  QuellonSetPileCapLoadsCallback([](const float* a, const float* b, const float* c, const float* d, const float* f,
                                    const float* g) { sent.loads.push_back({*a, *b, *c, *d, *f, *g}); });
  QuellonSetPileCapDisplacementsCallback([](const float* a, const float* b, const float* c, const float* d,
                                            const float* f, const float* g) {
    sent.moves.push_back({*a, *b, *c, *d, *f, *g});
  });
}

void Text(int (*setter)(const char*, int), const std::string& text) {
  ASSERT_EQ(setter(text.c_str(), static_cast<int>(text.size())), 1);
}
void Text(int (*setter)(int, const char*, int), int index, const std::string& text) {
  ASSERT_EQ(setter(index, text.c_str(), static_cast<int>(text.size())), 1);
}

// Three piles (one reinforced, one raked both ways) in clay over rock over sand, every
// value one that the file's number forms hold exactly. increments > 1 makes it
// non-linear, with the ground strengths, the custom Nq and the limits in play.
void EnterModel(int increments) {
  Text(QuellonSetProjectName, "Harbour wall, bent 7");
  Text(QuellonSetProjectDescription, "Setters, text model file and back");
  ASSERT_EQ(QuellonSetProjectDate(2025, 3, 14), 1);
  Text(QuellonSetProjectFilename, "harbour_bent7.tmw");
  int flags[40] = {};
  for (int f : {2, 25, 35}) flags[f - 1] = 1;
  ASSERT_EQ(QuellonSetProjectFlags(flags, 40), 1);
  ASSERT_EQ(QuellonSetNumberOfLoadIncrements(increments), 1);
  ASSERT_EQ(QuellonSetProjectElasticUnloadingFlag(0), 1);
  ASSERT_EQ(QuellonSetProjectHyperbolicFactors(0.5, 0.65, 0.7, 0.85), 1);
  ASSERT_EQ(QuellonSetProjectNq(0, 28.5), 1);
  ASSERT_EQ(QuellonSetProjectLimitingShaftFriction(140.0), 1);
  ASSERT_EQ(QuellonSetProjectLimitingBearingPressure(5200.0), 1);
  ASSERT_EQ(QuellonSetActions(120.0, -45.5, 2400.0, 30.25, -60.0, 15.0, 0.25, -0.125), 1);

  ASSERT_EQ(QuellonSetBoreholeNumberOfLayers(3), 1);
  ASSERT_EQ(QuellonSetBoreholeDepthToRigidLayer(24.0), 1);
  ASSERT_EQ(QuellonSetBoreholeOverburden(7.5), 1);
  ASSERT_EQ(QuellonSetBoreholeLayerAveraging(2), 1);
  const double tops[3] = {0.0, 3.5, 6.25};
  const int types[3] = {2, 3, 1};
  for (int l = 1; l <= 3; ++l) {
    Text(QuellonSetBoreholeLayerName, l, "Layer " + std::to_string(l));
    Text(QuellonSetGroundName, l, "Ground " + std::to_string(l));
    ASSERT_EQ(QuellonSetBoreholeLayerDepth(l, tops[l - 1]), 1);
    ASSERT_EQ(QuellonSetBoreholeLayerStiffness(l, 15000.0 * l, 750.5, 12000.0 * l, 600.0, 0.25 + 0.05 * l), 1);
    ASSERT_EQ(QuellonSetGroundType(l, types[l - 1]), 1);
    ASSERT_EQ(QuellonSetGroundWeightDensity(l, 17.5 + l), 1);
  }
  ASSERT_EQ(QuellonSetSoilUndrainedShearStrength(1, 35.0, 4.5), 1);
  ASSERT_EQ(QuellonSetSoilUndrainedInterfaceParameter(1, 0.65), 1);
  ASSERT_EQ(QuellonSetGroundMaximumSkinFriction(1, 30.5), 1);
  ASSERT_EQ(QuellonSetRockStrength(2, 3500.0), 1);
  ASSERT_EQ(QuellonSetRockInterfaceParameters(2, 0.45, 0.5, 2.25, 0.5, 0.75), 1);
  ASSERT_EQ(QuellonSetGroundMaximumBearingPressure(2, 7000.0), 1);
  ASSERT_EQ(QuellonSetSoilAngleOfFriction(3, 35.5), 1);
  ASSERT_EQ(QuellonSetSoilDrainedInterfaceParameter(3, 27.0), 1);
  ASSERT_EQ(QuellonSetSoilEarthPressureCoefficient(3, 0.95), 1);

  ASSERT_EQ(QuellonSetNumberOfPiles(3), 1);
  ASSERT_EQ(QuellonSetNumberOfPileElements(3), 1);
  ASSERT_EQ(QuellonSetPileInteractionDistance(15.5), 1);
  ASSERT_EQ(QuellonSetPileFreeStandingLength(0.75), 1);
  for (int p = 1; p <= 3; ++p) {
    Text(QuellonSetPileName, p, "P" + std::to_string(p));
    ASSERT_EQ(QuellonSetPileCoordinates(p, -1.6 + 1.6 * (p - 1), 0.4 * (p % 2), 0.0), 1);
    ASSERT_EQ(QuellonSetPileDimensions(p, 10.5, 0.6, p == 2 ? 0.35 : 0.0, 0.6), 1);
    ASSERT_EQ(QuellonSetPileReinforcedSectionProperties(p, 0.0, 8000.0, 190.5, 190.5, 150.0), 1);
    ASSERT_EQ(QuellonSetPileUnreinforcedSectionProperties(p, 8000.0, 190.5, 190.5, 150.0), 1);
  }
  ASSERT_EQ(QuellonSetPileReinforcedSectionProperties(1, 4.25, 9500.0, 240.0, 240.0, 180.0), 1);
  ASSERT_EQ(QuellonSetPileRake(3, 7.5, -7.5), 1);
}

std::string Padded(const std::string& path) {
  std::string field = path;
  field.resize(260, ' ');
  return field;
}

// The first line where two documents part, for a readable failure; "" when they agree.
std::string FirstDifference(const std::string& a, const std::string& b) {
  if (a == b) return "";
  const auto la = test::SplitLines(a), lb = test::SplitLines(b);
  for (std::size_t i = 0; i < la.size() || i < lb.size(); ++i) {
    const std::string x = i < la.size() ? la[i] : "(end)", y = i < lb.size() ? lb[i] : "(end)";
    if (x != y) return "line " + std::to_string(i + 1) + ":\n  " + x + "\n  " + y;
  }
  return "line ends differ";
}

class TextModelAnalysis : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(TheEngine().foundation.NumberOfPiles, 0) << "another test left a model behind";
    RegisterCallbacks();
  }
  // Files closed, callbacks cleared, and any model that a failed step left released.
  void TearDown() override {
    QuellonCloseAllFiles();
    QuellonSetCreateIncrementCallback(nullptr);
    QuellonSetStiffnessMatrixCallback(nullptr);
    QuellonSetPileCapLoadsCallback(nullptr);
    QuellonSetPileCapDisplacementsCallback(nullptr);
    Engine& e = TheEngine();
    ReleaseFoundation(e);
    ReleaseBorehole(e);
    ResetActions(e);
    ResetProject(e);
  }

  // One run of the model in hand; its XML document and what the host was sent.
  std::pair<std::string, Sent> Run(const std::string& name) {
    sent = Sent{};
    const std::string xml = test::ScratchPath(name);
    ::testing::internal::CaptureStdout();
    EXPECT_EQ(QuellonRunAnalysis1(xml.c_str()), 1);
    ::testing::internal::GetCapturedStdout();
    QuellonCloseAllFiles();
    return {test::ReadBytes(xml), sent};
  }
};

TEST_F(TextModelAnalysis, ModelReadBackFromItsFileGivesTheSameAnalysis) {
  for (int increments : {1, 3}) {
    SCOPED_TRACE("increments " + std::to_string(increments));
    EnterModel(increments);
    const std::string tmk = test::ScratchPath("bent7.tmk");
    ASSERT_EQ(QuellonCreateTMKFile(tmk.c_str()), 1);
    QuellonCloseTMKFile();
    const auto [direct_xml, direct] = Run("direct.xml");

    // The run consumed the model; the file brings it back.
    ASSERT_EQ(TheEngine().foundation.NumberOfPiles, 0);
    ::testing::internal::CaptureStdout();
    ASSERT_EQ(READTMWFILEDIRECT(Padded(tmk).c_str()), 1);
    ::testing::internal::GetCapturedStdout();
    EXPECT_EQ(TheEngine().project.NonLinear, increments > 1 ? 1 : 0);
    const auto [read_xml, read] = Run("read.xml");

    ASSERT_EQ(direct.increments.size(), static_cast<std::size_t>(increments));
    ASSERT_EQ(direct.loads.size(), static_cast<std::size_t>(increments));
    EXPECT_TRUE(read == direct) << "the callbacks received other numbers";
    ASSERT_NE(direct_xml.find("<Filename>harbour_bent7.tmw</Filename>"), std::string::npos);
    EXPECT_EQ(FirstDifference(direct_xml, read_xml), "");
  }
}

}  // namespace
}  // namespace quellon
