// Models whose numerics would be undefined are refused before assembly with an error
// that names the culprit, and the run ends in order; models at the sound edge of each
// range still run.
#include "engine/model_checks.h"

#include <functional>
#include <limits>

#include "engine/run_analysis.h"
#include "../common/engine_support.h"
#include "solution/solution.h"

namespace quellon {
namespace {

using namespace testing;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
using Change = std::function<void(Engine&)>;

// Two piles of four elements, non-linear, in `layers` clay layers of 5 m, through
// the checks alone: the result, the one error sent (empty if none) and the error code.
std::tuple<int, std::string, int> Check(const Change& change, int layers) {
  Engine e;
  FillSmallModel(e, 2, 4, 3);
  e.borehole = Borehole{};
  CreateLayers(e, layers);
  for (int i = 1; i <= layers; ++i) e.borehole.Layers(i) = Clay(5.0f * static_cast<float>(i - 1), 20000.0f, 50.0f);
  change(e);
  PrepareGroupGeometry(e);
  e.project.MessageCallback = &RecordMessage;
  Received().clear();
  const int result = CheckModel(e);
  EXPECT_LE(Received().size(), 1u);
  return {result, Received().empty() ? "" : Received()[0], e.project.ErrorCode};
}

TEST(ModelChecks, UndefinedModelsAreRefusedWithTheCulpritNamed) {
  const std::tuple<int, Change, const char*, int> cases[] = {
      {1, [](Engine& e) { e.foundation = Foundation{}; }, "the model has no piles", 0},
      {1, [](Engine& e) { e.foundation.NumberOfElements = 0; },
       "the piles have 0 shaft elements: each pile needs one at least", 0},
      {1, [](Engine& e) { e.borehole = Borehole{}; }, "the borehole has no layers: there is no ground to carry the piles", 0},
      {1, [](Engine& e) { e.borehole.Layers(1).Poisson = kNaN; }, "layer 1: Poisson is not a finite number (nan)", 0},
      {1, [](Engine& e) { e.foundation.Piles(2).X = -std::numeric_limits<float>::infinity(); },
       "pile 2: X is not a finite number (-inf)", 0},
      {1, [](Engine& e) { e.actions.Mz = kNaN; }, "the loads on the cap: Mz is not a finite number (nan)", 0},
      {1, [](Engine& e) { e.borehole.Layers(1).Poisson = 0.55f; }, "layer 1: its Poisson's ratio is above 0.5 (0.55)", 307},
      {1, [](Engine& e) { e.borehole.Layers(1).Poisson = -1.0f; }, "layer 1: its Poisson's ratio is -1 or less (-1)", 0},
      {1, [](Engine& e) { e.foundation.Piles(2).Length = 0.0f; }, "pile 2: its length is 0 or less (0 m)", 295},
      {1, [](Engine& e) { e.foundation.Piles(2).RakeY = -90.0f; },
       "pile 2: its rake about Y (-90 degrees) must lie between -90 and 90 degrees", 0},
      {1, [](Engine& e) { e.foundation.Piles(2).ReinforcedLength = 5.0f, e.foundation.Piles(2).UnreinforcedEIy = 0.0f; },
       "pile 2: the flexural stiffness EIy below its reinforced length is 0 or less (0)", 300},
      {1, [](Engine& e) { e.foundation.Piles(1).ShaftDiameter = 1.0e-4f; },
       "pile 1: its elements are too slender to be integrated (3 m long for a diameter of 0.0001 m): use more elements", 0},
      {1, [](Engine& e) { e.foundation.Piles(1).Z = -0.5f; },
       "pile 1: it enters the ground at Z = -0.5 m, above the free surface of the ground at Z = 0", 0},
      {1, [](Engine& e) { e.borehole.Layers(1).DepthToTop = 1.0f; },
       "pile 1: it enters the ground at Z = 0 m, above the top of the first layer (Z = 1 m), where there is no soil", 0},
      {1, [](Engine& e) { e.foundation.FreeStandingLength = -1.0f; }, "the free-standing length is negative (-1 m)", 0},
      {1, [](Engine& e) { e.borehole.DepthToRigidLayer = -2.0f; },
       "the depth to the rigid layer is negative (-2 m): the rigid layer would lie above the ground that the piles enter", 0},
      {1, [](Engine& e) { e.project.Rl = 1.0f; },
       "the hyperbolic constant of the lateral (Rl) is 1 or more (1): the soil would lose all its stiffness before its "
       "limiting stress", 0},
      {1, [](Engine& e) { e.borehole.Layers(1).Eh = 1000.0f, e.borehole.Layers(1).dEh = -100.0f; },
       "layer 1: the horizontal soil modulus is 0 or less (-200 kPa) at Z = 12 m, a depth that pile 1 reaches", 306},
      {4, [](Engine& e) { e.borehole.Layers(2).Ev = 0.0f; },
       "layer 2: the vertical soil modulus is 0 or less (0 kPa) at Z = 5 m, a depth that pile 1 reaches", 305},
      {4, [](Engine& e) { e.borehole.Layers(4).Ev = -1.0f; },  // read by the smoothing below the tips
       "layer 4: the vertical soil modulus is 0 or less (-1 kPa) at Z = 15 m, a depth that pile 1 reaches", 305},
      {4, [](Engine& e) { e.borehole.Layers(4).Eh = 0.0f, e.borehole.DepthToRigidLayer = 40.0f; },
       "layer 4: the horizontal soil modulus is 0 or less at the rigid layer (Z = 40 m)", 306},
      {4, [](Engine& e) { e.borehole.Layers(3).DepthToTop = 4.0f; },
       "layer 3: its top (Z = 4 m) lies above the top of layer 2 (Z = 5 m): layers stand in order of increasing depth", 0},
      {1, [](Engine& e) { e.borehole.Layers(1).GroundType = kRock, e.borehole.Layers(1).qu = 0.0f; },
       "layer 1: the unconfined strength of its rock is 0 or less (0 kPa), which its power laws can't take", 316},
      {4, [](Engine& e) { e.borehole.Layers(3).GroundType = kCoarseSoil, e.borehole.Layers(3).phi = 90.0f; },
       "layer 3: its angle of shearing resistance (90 degrees) must lie below 90 degrees", 312},
      {4, [](Engine& e) { e.borehole.Layers(3).GroundType = 0; },
       "layer 3: its ground type (0) is none of 1 to 4, so its strength is unknown", 308},
  };
  for (const auto& [layers, change, error, code] : cases) {
    EXPECT_EQ(Check(change, layers), std::make_tuple(0, std::string("2 Error - ") + error, code));
  }
}

TEST(ModelChecks, SoundEdgesOfEachRangeAreAccepted) {
  const Change cases[] = {
      // Stiffness rising from nothing at the surface: no point of a pile lies at Z = 0.
      [](Engine& e) { (e.borehole.Layers(1) = Clay(0.0f, 0.0f, 50.0f)).dEv = 1000.0f, e.borehole.Layers(1).dEh = 1000.0f; },
      // No stiffness deeper than any pile and the smoothing below it reach.
      [](Engine& e) { e.borehole.Layers(4).DepthToTop = 30.0f, e.borehole.Layers(4).Ev = 0.0f; },
      [](Engine& e) { e.borehole.Layers(1).Poisson = 0.5f; },
      [](Engine& e) { e.borehole.Layers(1).Poisson = -0.9f; },
      // The whole piles reinforced: the other section is never read.
      [](Engine& e) { e.foundation.Piles(1).UnreinforcedEA = e.foundation.Piles(2).UnreinforcedGJ = 0.0f; },
      [](Engine& e) { e.borehole.Layers(4).GroundType = 0; },  // strength below the piles
      [](Engine& e) { e.foundation.Piles(1).RakeX = 60.0f; },
      [](Engine& e) { e.project.Rs = -0.5f; },  // a stiffening hyperbola
      [](Engine& e) { e.borehole.Layers(1).DepthToTop = e.foundation.Piles(1).Z = e.foundation.Piles(2).Z = 1.0f; },
      // A linear run never reads the strengths.
      [](Engine& e) { e.borehole.Layers(1).GroundType = 0, e.project.NonLinear = 0, e.project.Rs = 2.0f; },
  };
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    EXPECT_EQ(Check(cases[i], 4), std::make_tuple(1, std::string(), 0)) << "case " << i;
  }
}

TEST(ModelChecks, RefusedRunEndsInOrderAndTheNextRunWorks) {
  ScratchDir dir;
  Engine e;
  FillSmallModel(e, 2, 3, 2);
  e.borehole.Layers(1).Poisson = kNaN;
  e.project.MessageCallback = &RecordMessage;
  Received().clear();
  EXPECT_EQ(RunAnalysis(e, (dir / "run.xml").string(), (dir / "run.txt").string()), 0);
  EXPECT_EQ(Received(), (std::vector<std::string>{"0 Running the boundary element analysis...",
                                                  "2 Error - layer 1: Poisson is not a finite number (nan)",
                                                  "0 Releasing memory ...",
                                                  "0 Finished running the boundary element analysis (failed)"}));
  // Nothing of the model was written, and the arrays are gone.
  EXPECT_EQ(fs::file_size(dir / "run.xml") + fs::file_size(dir / "run.txt"), 0u);
  EXPECT_EQ(WorkspaceElements(e.ws), 0u);
  FillSmallModel(e, 2, 3, 2);
  EXPECT_EQ(RunAnalysis(e, (dir / "next.xml").string(), std::nullopt), 1);
}

TEST(ModelChecks, TablesFollowTheModelBeyondFiftyElementsAndLayers) {
  // One pile of 60 elements through 60 thin layers of stiffening clay, two increments.
  ScratchDir dir;
  Engine e;
  FillSmallModel(e, 1, 60, 2);
  e.borehole = Borehole{};
  ASSERT_EQ(CreateLayers(e, 60), 1);
  for (int i = 1; i <= 60; ++i) {
    const float f = static_cast<float>(i);
    e.borehole.Layers(i) = Clay(0.25f * (f - 1.0f), 10000.0f + 500.0f * f, 40.0f + f);
  }
  e.foundation.Piles(1).Length = e.foundation.Piles(1).ReinforcedLength = 18.0f;
  e.actions.Fx = 50.0f;
  ::testing::internal::CaptureStdout();
  EXPECT_EQ(RunAnalysis(e, (dir / "deep.xml").string(), std::nullopt), 1);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "Increment 1\nIncrement 2\n");
  const std::vector<std::string> xml = ReadLines(dir / "deep.xml");
  EXPECT_EQ(xml.empty() ? "" : xml.back(), "</Tolmark>");
  for (const std::string& line : xml) EXPECT_EQ(line.find("nan"), std::string::npos) << line;
}

}  // namespace
}  // namespace quellon
