// Models whose numerics would be undefined are refused before assembly with an error
// that names the culprit, and the run ends in order; models at the sound edge of each
// range still run.
#include "engine/model_checks.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>

#include "engine/file_units.h"
#include "engine/model_tables.h"
#include "engine/run_analysis.h"
#include "engine_test_support.h"
#include "solution/solution.h"

namespace quellon {
namespace {

using namespace testing_support;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInf = std::numeric_limits<float>::infinity();

// Two piles of four elements, non-linear, through the checks alone. The result of
// CheckModel and the one error it sent (empty when it sent none).
struct Verdict {
  int result;
  std::string error;
  int code;
};

Verdict Check(const std::function<void(Engine&)>& change, int layers = 1) {
  Engine e;
  FillSmallModel(e, 2, 4, 3);
  if (layers > 1) {
    e.borehole = Borehole{};
    CreateLayers(e, layers);
    for (int i = 1; i <= layers; ++i) {
      Layer& l = e.borehole.Layers(i);
      l.DepthToTop = 5.0f * static_cast<float>(i - 1);
      l.Ev = l.Eh = 20000.0f;
      l.Poisson = 0.3f;
      l.GroundType = kFineSoil;
      l.cu = 50.0f;
      l.alpha = 0.5f;
      l.WeightDensity = 18.0f;
    }
  }
  change(e);
  PrepareGroupGeometry(e);
  e.project.MessageCallback = &RecordMessage;
  Received().clear();
  const int result = CheckModel(e);
  std::string error;
  for (const std::string& m : Received()) {
    if (m.rfind("2 ", 0) == 0) error = m.substr(2);
  }
  EXPECT_LE(Received().size(), 1u);
  return {result, error, e.project.ErrorCode};
}

struct RefusedCase {
  const char* what;
  std::function<void(Engine&)> change;
  const char* error;
  int code;
  int layers;
};

TEST(ModelChecks, UndefinedModelsAreRefusedWithTheCulpritNamed) {
  const RefusedCase cases[] = {
      {"no piles", [](Engine& e) { e.foundation = Foundation{}; }, "Error - the model has no piles", 0, 1},
      {"no elements", [](Engine& e) { e.foundation.NumberOfElements = 0; },
       "Error - the piles have 0 shaft elements: each pile needs one at least", 0, 1},
      {"no layers", [](Engine& e) { e.borehole = Borehole{}; },
       "Error - the borehole has no layers: there is no ground to carry the piles", 0, 1},
      {"NaN Poisson", [](Engine& e) { e.borehole.Layers(1).Poisson = kNaN; },
       "Error - layer 1: Poisson is not a finite number (nan)", 0, 1},
      {"infinite pile position", [](Engine& e) { e.foundation.Piles(2).X = -kInf; },
       "Error - pile 2: X is not a finite number (-inf)", 0, 1},
      {"NaN load", [](Engine& e) { e.actions.Mz = kNaN; },
       "Error - the loads on the cap: Mz is not a finite number (nan)", 0, 1},
      {"NaN in an unused strength", [](Engine& e) { e.borehole.Layers(1).k4 = kNaN; },
       "Error - layer 1: k4 is not a finite number (nan)", 0, 1},
      {"Poisson above 0.5", [](Engine& e) { e.borehole.Layers(1).Poisson = 0.55f; },
       "Error - layer 1: its Poisson's ratio is above 0.5 (0.55)", 307, 1},
      {"Poisson of -1", [](Engine& e) { e.borehole.Layers(1).Poisson = -1.0f; },
       "Error - layer 1: its Poisson's ratio is -1 or less (-1)", 0, 1},
      {"zero length", [](Engine& e) { e.foundation.Piles(2).Length = 0.0f; },
       "Error - pile 2: its length is 0 or less (0 m)", 295, 1},
      {"negative shaft diameter", [](Engine& e) { e.foundation.Piles(1).ShaftDiameter = -0.6f; },
       "Error - pile 1: its shaft diameter is 0 or less (-0.6 m)", 296, 1},
      {"zero base diameter", [](Engine& e) { e.foundation.Piles(1).BaseDiameter = 0.0f; },
       "Error - pile 1: its base diameter is 0 or less (0 m)", 297, 1},
      {"flat pile", [](Engine& e) { e.foundation.Piles(2).RakeY = -90.0f; },
       "Error - pile 2: its rake about Y (-90 degrees) must lie between -90 and 90 degrees", 0, 1},
      {"unreinforced section in use but unset",
       [](Engine& e) {
         e.foundation.Piles(2).ReinforcedLength = 5.0f;
         e.foundation.Piles(2).UnreinforcedEIy = 0.0f;
       },
       "Error - pile 2: the flexural stiffness EIy below its reinforced length is 0 or less (0)", 300, 1},
      {"slender elements", [](Engine& e) { e.foundation.Piles(1).ShaftDiameter = 1.0e-4f; },
       "Error - pile 1: its elements are too slender to be integrated (3 m long for a diameter of 0.0001 m): "
       "use more elements",
       0, 1},
      {"pile above the surface", [](Engine& e) { e.foundation.Piles(1).Z = -0.5f; },
       "Error - pile 1: it enters the ground at Z = -0.5 m, above the free surface of the ground at Z = 0", 0, 1},
      {"pile above the first layer", [](Engine& e) { e.borehole.Layers(1).DepthToTop = 1.0f; },
       "Error - pile 1: it enters the ground at Z = 0 m, above the top of the first layer (Z = 1 m), where there "
       "is no soil",
       0, 1},
      {"negative free-standing length", [](Engine& e) { e.foundation.FreeStandingLength = -1.0f; },
       "Error - the free-standing length is negative (-1 m)", 0, 1},
      {"rigid layer above the ground", [](Engine& e) { e.borehole.DepthToRigidLayer = -2.0f; },
       "Error - the depth to the rigid layer is negative (-2 m): the rigid layer would lie above the ground that "
       "the piles enter",
       0, 1},
      {"hyperbolic constant of 1", [](Engine& e) { e.project.Rl = 1.0f; },
       "Error - the hyperbolic constant of the lateral (Rl) is 1 or more (1): the soil would lose all its "
       "stiffness before its limiting stress",
       0, 1},
      {"no stiffness in the only layer",
       [](Engine& e) { e.borehole.Layers(1).Ev = e.borehole.Layers(1).dEv = 0.0f; },
       "Error - layer 1: the vertical soil modulus is 0 or less (0 kPa) at Z = 0 m, a depth that pile 1 reaches",
       305, 1},
      {"horizontal modulus falling below 0",
       [](Engine& e) {
         e.borehole.Layers(1).Eh = 1000.0f;
         e.borehole.Layers(1).dEh = -100.0f;
       },
       "Error - layer 1: the horizontal soil modulus is 0 or less (-200 kPa) at Z = 12 m, a depth that pile 1 "
       "reaches",
       306, 1},
      {"soft layer between two stiff ones", [](Engine& e) { e.borehole.Layers(2).Ev = 0.0f; },
       "Error - layer 2: the vertical soil modulus is 0 or less (0 kPa) at Z = 5 m, a depth that pile 1 reaches",
       305, 4},
      {"soft layer read by the smoothing below the tips", [](Engine& e) { e.borehole.Layers(4).Ev = -1.0f; },
       "Error - layer 4: the vertical soil modulus is 0 or less (-1 kPa) at Z = 15 m, a depth that pile 1 "
       "reaches",
       305, 4},
      {"rigid layer in soft ground",
       [](Engine& e) {
         e.borehole.Layers(4).Eh = 0.0f;
         e.borehole.DepthToRigidLayer = 40.0f;
       },
       "Error - layer 4: the horizontal soil modulus is 0 or less at the rigid layer (Z = 40 m)", 306, 4},
      {"layers out of order", [](Engine& e) { e.borehole.Layers(3).DepthToTop = 4.0f; },
       "Error - layer 3: its top (Z = 4 m) lies above the top of layer 2 (Z = 5 m): layers stand in order of "
       "increasing depth",
       0, 4},
      {"rock without strength",
       [](Engine& e) {
         e.borehole.Layers(1).GroundType = kRock;
         e.borehole.Layers(1).qu = 0.0f;
       },
       "Error - layer 1: the unconfined strength of its rock is 0 or less (0 kPa), which its power laws can't take",
       316, 1},
      {"vertical friction angle",
       [](Engine& e) {
         e.borehole.Layers(3).GroundType = kCoarseSoil;
         e.borehole.Layers(3).phi = 90.0f;
       },
       "Error - layer 3: its angle of shearing resistance (90 degrees) must lie below 90 degrees", 312, 4},
      {"unknown ground type at a tip", [](Engine& e) { e.borehole.Layers(3).GroundType = 0; },
       "Error - layer 3: its ground type (0) is none of 1 to 4, so its strength is unknown", 308, 4},
  };
  for (const RefusedCase& c : cases) {
    SCOPED_TRACE(c.what);
    const Verdict v = Check(c.change, c.layers);
    EXPECT_EQ(v.result, 0);
    EXPECT_EQ(v.error, c.error);
    EXPECT_EQ(v.code, c.code);
  }
}

TEST(ModelChecks, SoundEdgesOfEachRangeAreAccepted) {
  const std::pair<const char*, std::function<void(Engine&)>> cases[] = {
      // Stiffness rising from nothing at the surface: no point of a pile lies at Z = 0.
      {"modulus 0 at the surface", [](Engine& e) {
         Layer& l = e.borehole.Layers(1);
         l.Ev = l.Eh = 0.0f;
         l.dEv = l.dEh = 1000.0f;
       }},
      // A layer without stiffness deeper than any pile and the smoothing below it reach.
      {"soft ground below the piles", [](Engine& e) {
         Layer& l = e.borehole.Layers(4);
         l.DepthToTop = 30.0f;
         l.Ev = l.Eh = 0.0f;
       }},
      {"incompressible ground", [](Engine& e) { e.borehole.Layers(1).Poisson = 0.5f; }},
      {"negative Poisson's ratio", [](Engine& e) { e.borehole.Layers(1).Poisson = -0.9f; }},
      // The whole pile reinforced: the other section is never read.
      {"unreinforced section unset", [](Engine& e) {
         for (int p = 1; p <= 2; ++p) e.foundation.Piles(p).UnreinforcedEA = e.foundation.Piles(p).UnreinforcedGJ = 0.0f;
       }},
      {"strength of a layer below the piles", [](Engine& e) { e.borehole.Layers(4).GroundType = 0; }},
      {"steep rake", [](Engine& e) { e.foundation.Piles(1).RakeX = 60.0f; }},
      {"stiffening hyperbolic constant", [](Engine& e) { e.project.Rs = -0.5f; }},
      {"entry on the top of the first layer", [](Engine& e) {
         e.borehole.Layers(1).DepthToTop = 1.0f;
         e.foundation.Piles(1).Z = e.foundation.Piles(2).Z = 1.0f;
       }},
  };
  for (const auto& [what, change] : cases) {
    SCOPED_TRACE(what);
    const Verdict v = Check(change, 4);
    EXPECT_EQ(v.result, 1);
    EXPECT_EQ(v.error, "");
  }
  // A linear run never reads the strengths; a ground type of 0 is no fault there.
  const Verdict linear = Check([](Engine& e) {
    e.borehole.Layers(1).GroundType = 0;
    e.project.NonLinear = 0;
    e.actions.NumberOfIncrements = 1;
    e.project.Rs = 2.0f;
  });
  EXPECT_EQ(linear.result, 1);
}

TEST(ModelChecks, RefusedRunEndsInOrderAndTheNextRunWorks) {
  ScratchDir dir;
  Engine e;
  FillSmallModel(e, 2, 3, 2);
  e.borehole.Layers(1).Poisson = kNaN;
  e.project.MessageCallback = &RecordMessage;
  ASSERT_EQ(StartLOGFile(e, (dir / "run.log").string()), 1);
  Received().clear();
  EXPECT_EQ(RunAnalysis(e, (dir / "run.xml").string(), (dir / "run.txt").string()), 0);
  EXPECT_EQ(Received(), (std::vector<std::string>{"0 Running the boundary element analysis...",
                                                  "2 Error - layer 1: Poisson is not a finite number (nan)",
                                                  "0 Releasing memory ...",
                                                  "0 Finished running the boundary element analysis (failed)"}));
  // Nothing of the model was written; the files stay open for the host, the model is
  // reset and the arrays are gone.
  EXPECT_EQ(fs::file_size(dir / "run.xml"), 0u);
  EXPECT_EQ(fs::file_size(dir / "run.txt"), 0u);
  EXPECT_EQ(e.project.XMLUnit, kXMLUnit);
  EXPECT_EQ(e.project.TXTUnit, kTXTUnit);
  EXPECT_EQ(e.foundation.NumberOfPiles, 0);
  EXPECT_EQ(WorkspaceElements(e.ws), 0u);
  EXPECT_FALSE(e.running);
  e.files.log.flush();
  const std::vector<std::string> log = ReadLines(dir / "run.log");
  EXPECT_NE(Find(log, "[Error] Error - layer 1: Poisson is not a finite number (nan)"), std::string::npos);

  FillSmallModel(e, 2, 3, 2);
  EXPECT_EQ(RunAnalysis(e, (dir / "next.xml").string(), std::nullopt), 1);
  EXPECT_EQ(Received().back(), "0 Finished running the boundary element analysis (success)");
}

TEST(ModelChecks, TablesFollowTheModelBeyondFiftyElementsAndLayers) {
  // 60 elements and 60 thin layers of stiffening clay: every table is sized from the
  // model, so the run goes through a non-linear increment and ends in order.
  ScratchDir dir;
  Engine e;
  ASSERT_EQ(CreateLayers(e, 60), 1);
  ASSERT_EQ(CreatePiles(e, 1), 1);
  for (int i = 1; i <= 60; ++i) {
    Layer& l = e.borehole.Layers(i);
    l.DepthToTop = 0.25f * static_cast<float>(i - 1);
    l.Ev = l.Eh = 10000.0f + 500.0f * static_cast<float>(i);
    l.Poisson = 0.3f;
    l.GroundType = kFineSoil;
    l.cu = 40.0f + static_cast<float>(i);
    l.alpha = 0.6f;
    l.WeightDensity = 18.0f;
  }
  e.borehole.LayerAveraging = 2;
  e.foundation.NumberOfElements = 60;
  Pile& pile = e.foundation.Piles(1);
  pile.Length = 18.0f;
  pile.ShaftDiameter = pile.BaseDiameter = 0.8f;
  pile.ReinforcedLength = 18.0f;
  pile.EA = 1.2e7f;
  pile.EIx = pile.EIy = 5.0e5f;
  pile.GJ = 4.0e5f;
  e.project.AutoNq = 1;
  e.project.InteractionFlag = 1;
  e.project.DynamicModel = 1;
  e.project.Rs = e.project.Rb = e.project.Rl = e.project.Rt = 0.5f;
  e.actions.NumberOfIncrements = 2;
  e.project.NonLinear = 1;
  e.actions.Fz = 1500.0f;
  e.actions.Fx = 50.0f;
  e.project.MessageCallback = &RecordMessage;
  Received().clear();
  testing::internal::CaptureStdout();
  const int result = RunAnalysis(e, (dir / "deep.xml").string(), std::nullopt);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "Increment 1\nIncrement 2\n");
  EXPECT_EQ(result, 1);
  for (const std::string& m : Received()) EXPECT_NE(m.rfind("2 ", 0), 0u) << m;
  // The limits of the deepest element come from the deepest layers, and the results are
  // numbers all through.
  const std::vector<std::string> xml = ReadLines(dir / "deep.xml");
  ASSERT_FALSE(xml.empty());
  EXPECT_EQ(xml.back(), "</Tolmark>");
  for (const std::string& line : xml) EXPECT_EQ(line.find("nan"), std::string::npos) << line;
}

}  // namespace
}  // namespace quellon
