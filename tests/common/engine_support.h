// Shared by the tests that reach inside the engine: the common files and folders, files
// named after the running test, golden reports, messages and callbacks recorded, and
// small models written straight into the records.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <string>
#include <vector>

#include "engine/engine.h"
#include "engine/model_tables.h"
#include "engine/workspace.h"
#include "quellon.h"
#include "test_files.h"

namespace quellon::testing {

using qtest::Find;
using qtest::ReadBytes;
using qtest::ReadLines;
using qtest::ScratchDir;
using qtest::WriteBytes;
namespace fs = std::filesystem;

// A file in the temporary folder, named after the running test, removed at its end.
class TempFile {
 public:
  explicit TempFile(const std::string& suffix) {
    const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
    path_ = (fs::temp_directory_path() /
             (std::string("quellon_") + info->test_suite_name() + "_" + info->name() + suffix)).string();
  }
  ~TempFile() { fs::remove(path_, ec_); }
  const std::string& path() const { return path_; }

 private:
  std::string path_;
  std::error_code ec_;
};

// The file against a golden file of the test data; on a mismatch the actual text is kept
// in the temporary folder for a diff.
inline void ExpectGolden(const std::string& actual_path, const std::string& golden_name) {
  const std::string golden = std::string(QUELLON_TEST_DATA_DIR) + "/" + golden_name;
  const std::string actual = ReadBytes(actual_path);
  ASSERT_FALSE(actual.empty());
  if (!fs::exists(golden) || ReadBytes(golden) != actual) {
    const std::string keep = (fs::temp_directory_path() / (golden_name + ".actual")).string();
    WriteBytes(keep, actual);
    ADD_FAILURE() << golden_name << " differs from the report; actual text in " << keep;
  }
}

inline void OpenTXT(Engine& e, const std::string& path) {
  ASSERT_TRUE(e.files.txt.create(path));
  e.project.TXTUnit = kTXTUnit;
}
inline void OpenLOG(Engine& e, const std::string& path) {
  ASSERT_TRUE(e.files.log.create(path));
  e.project.LOGUnit = kLOGUnit;
}

inline void SetAllFlags(Project& p, bool on) {
  for (int i = 1; i <= kFlagCount; ++i) p.Flags(i) = on ? 1 : 0;
}

// Messages sent to the host through the message callback, as "<severity> <text>".
inline std::vector<std::string>& Received() {
  static std::vector<std::string> messages;
  return messages;
}
inline void RecordMessage(const int* severity, const char* text) {
  Received().push_back(std::to_string(*severity) + " " + text);
}

// A clay layer of uniform stiffness.
inline Layer Clay(float top, float modulus, float cu) {
  return Layer{.Name = {}, .GroundName = {}, .DepthToTop = top, .Ev = modulus, .Eh = modulus, .Poisson = 0.3f,
               .GroundType = kFineSoil, .cu = cu, .alpha = 0.5f, .WeightDensity = 18.0f};
}

// One clay layer, `piles` piles 3 m apart with `elements` shaft elements each, a
// vertical load in `increments` steps; the tables are created in the records.
inline void FillSmallModel(Engine& e, int piles, int elements, int increments) {
  ASSERT_EQ(CreateLayers(e, 1), 1);
  ASSERT_EQ(CreatePiles(e, piles), 1);
  e.borehole.Layers(1) = Clay(0.0f, 20000.0f, 60.0f);
  e.borehole.Layers(1).dEv = e.borehole.Layers(1).dEh = 500.0f;
  e.borehole.LayerAveraging = 2;
  e.foundation.NumberOfElements = elements;
  for (int p = 1; p <= piles; ++p) {
    Pile& pile = e.foundation.Piles(p);
    pile.X = 3.0f * static_cast<float>(p - 1);
    pile.Length = pile.ReinforcedLength = 12.0f;
    pile.ShaftDiameter = pile.BaseDiameter = 0.6f;
    pile.EA = pile.UnreinforcedEA = 8.0e6f;
    pile.EIx = pile.EIy = pile.UnreinforcedEIx = pile.UnreinforcedEIy = 1.9e5f;
    pile.GJ = pile.UnreinforcedGJ = 1.5e5f;
  }
  e.project.Rs = e.project.Rb = e.project.Rl = e.project.Rt = 0.9f;
  e.project.AutoNq = e.project.InteractionFlag = e.project.DynamicModel = e.project.Flags(16) = 1;
  e.actions.NumberOfIncrements = increments;
  e.project.NonLinear = increments > 1 ? 1 : 0;
  e.actions.Fz = 200.0f * static_cast<float>(piles);
}

// P vertical piles of n elements, 2 m apart along X, in one layer; reset values in
// force, and the workspace.
inline void SmallModel(Engine& e, int piles, int elements, int increments) {
  ResetProject(e);
  ResetActions(e);
  e.actions.NumberOfIncrements = increments, e.project.NonLinear = increments > 1, e.project.DynamicModel = 0;
  ASSERT_EQ(CreatePiles(e, piles), 1);
  e.foundation.NumberOfElements = elements;
  for (int p = 1; p <= piles; ++p) {
    Pile& q = e.foundation.Piles(p);
    q.Length = 10.0f, q.ShaftDiameter = q.BaseDiameter = 0.5f, q.X = 2.0f * static_cast<float>(p - 1);
    q.EA = q.UnreinforcedEA = 5.0e6f;
    q.EIx = q.UnreinforcedEIx = q.EIy = q.UnreinforcedEIy = 1.0e5f;
    q.GJ = q.UnreinforcedGJ = 8.0e4f;
  }
  ASSERT_EQ(CreateLayers(e, 1), 1);
  Layer& l = e.borehole.Layers(1);
  l.Ev = l.Eh = 2.0e4f, l.Poisson = 0.3f, l.GroundType = kFineSoil;
  ASSERT_EQ(CreateWorkspace(e), 1);
}
// A model that touches every line of the text model file: three piles (one reinforced,
// one plain, one raked both ways), four layers of the four ground types, custom Nq and
// interaction distance. Values are exact in the file's number forms.
inline void FillSampleModel(Engine& e, int increments) {
  Project& pr = e.project;
  pr.Name.assign("Jetty 4 \xE9tage, bent B");
  pr.Description.assign("Sample model for the file tests");
  pr.Filename.assign("C:\\jobs\\jetty4.tmw"), pr.Year = 2024, pr.Month = 3, pr.Day = 7;
  for (int i : {1, 2, 16, 25, 38}) pr.Flags(i) = 1;
  pr.DynamicModel = 1, pr.NonLinear = increments > 1 ? 1 : 0;
  pr.InteractionFlag = 3, pr.InteractionDistance = 12.5f, pr.AutoNq = 2, pr.Nq = 30.0f;
  pr.LimitingShaftFriction = 150.0f, pr.LimitingBearingPressure = 4500.0f;
  pr.Rs = 0.5f, pr.Rb = 0.9f, pr.Rl = 0.25f, pr.Rt = 0.0f, pr.ElasticUnloading = 1;
  e.actions = Actions{100.0f, -50.5f, 2500.0f, 10.0f, -20.25f, 5.0f, 0.125f, -0.5f, increments};
  Foundation& fd = e.foundation;
  CreatePiles(e, 3);
  fd.NumberOfElements = 4, fd.CapStiffness = 1, fd.FreeStandingLength = 1.25f;
  for (int p = 1; p <= 3; ++p) {
    Pile& q = fd.Piles(p);
    q.Name.assign(std::string("Pile ") + static_cast<char>('A' + p - 1));
    q.Length = 12.0f, q.ShaftDiameter = q.BaseDiameter = 0.6f, q.X = -1.5f + 1.5f * static_cast<float>(p - 1);
    q.Z = 0.25f, q.EA = q.UnreinforcedEA = 2500000.0f, q.GJ = q.UnreinforcedGJ = 57700.0f;
    q.EIx = q.UnreinforcedEIx = q.EIy = q.UnreinforcedEIy = 75000.0f;
  }
  Pile& r = fd.Piles(1);
  r.ReinforcedLength = 8.5f, r.UnreinforcedEA = 1200000.0f, r.UnreinforcedGJ = 27700.0f;
  r.UnreinforcedEIx = r.UnreinforcedEIy = 36000.0f;
  fd.Piles(3).RakeX = 5.0f, fd.Piles(3).RakeY = -5.0f, fd.Piles(3).InternalDiameter = 0.45f;
  Borehole& bh = e.borehole;
  CreateLayers(e, 4);
  bh.DepthToRigidLayer = 30.0f, bh.Overburden = 12.5f, bh.LayerAveraging = 2;
  const char* names[4] = {"Sand", "Clay", "Mudstone", "Fill"};
  const char* grounds[4] = {"Loose sand", "Soft clay", "Weak rock", "Direct values"};
  for (int i = 1; i <= 4; ++i) {
    Layer& l = bh.Layers(i);
    const float f = static_cast<float>(i);
    l.Name.assign(names[i - 1]), l.GroundName.assign(grounds[i - 1]);
    l.DepthToTop = 5.0f * (f - 1.0f), l.Ev = 20000.0f * f, l.dEv = 1000.0f, l.Eh = 15000.0f * f, l.dEh = 750.5f;
    l.Poisson = 0.3f, l.GroundType = i, l.WeightDensity = 18.5f;
    l.MaxSkinFriction = i == 2 ? 80.0f : 0.0f, l.MaxBearingPressure = i == 3 ? 9000.0f : 0.0f;
  }
  Layer &sand = bh.Layers(1), &clay = bh.Layers(2), &rock = bh.Layers(3), &direct = bh.Layers(4);
  sand.phi = 32.0f, sand.delta = 24.5f, sand.Ks = 0.8f;
  clay.cu = 25.0f, clay.dcu = 2.5f, clay.alpha = 0.6f;
  rock.qu = 5000.0f, rock.k1 = rock.k2 = 0.5f, rock.k3 = 1.25f, rock.k4 = 0.75f, rock.k5 = 1.5f;
  direct.DirectSkinFriction = 150.0f, direct.DirectEndBearing = 5000.0f;
  direct.HasDirectLateral = 1, direct.DirectLateral = 300.0f;
}

// Everything a run sends its host, in order, as recorded by Recorder().
struct Sent {
  std::vector<int> increments;
  std::vector<std::array<float, 36>> grmat;
  std::vector<std::array<float, 9>> stiffness;
  std::vector<std::array<float, 6>> loads, moves;
  bool operator==(const Sent&) const = default;
};
inline Sent sent;
inline RunCallbacks Recorder() {
  RunCallbacks r;
  r.CreateIncrement = [](const int* i) { sent.increments.push_back(*i); };
  r.SendStiffnessMatrix = [](const float* g) { std::copy(g, g + 36, sent.grmat.emplace_back().begin()); };
  r.SendForceDisplacementStiffnesses = [](const float* a, const float* b, const float* c, const float* d,
                                          const float* f, const float* g, const float* h, const float* i,
                                          const float* j) { sent.stiffness.push_back({*a, *b, *c, *d, *f, *g, *h, *i, *j}); };
  r.SendPileCapLoads = [](const float* a, const float* b, const float* c, const float* d, const float* f,
                          const float* g) { sent.loads.push_back({*a, *b, *c, *d, *f, *g}); };
  r.SendPileCapDisplacements = [](const float* a, const float* b, const float* c, const float* d, const float* f,
                                  const float* g) { sent.moves.push_back({*a, *b, *c, *d, *f, *g}); };
  return r;
}
// The recorder, emptied, on the engine behind the C API; or (off) nothing there.
inline void SetHostCallbacks(bool on) {
  const RunCallbacks c = on ? Recorder() : RunCallbacks{};
  QuellonSetCreateIncrementCallback(c.CreateIncrement);
  QuellonSetStiffnessMatrixCallback(c.SendStiffnessMatrix);
  QuellonSetForceDisplacementStiffnessesCallback(c.SendForceDisplacementStiffnesses);
  QuellonSetPileCapLoadsCallback(c.SendPileCapLoads);
  QuellonSetPileCapDisplacementsCallback(c.SendPileCapDisplacements);
  if (on) sent = Sent{};
}


// Total elements held by the workspace's arrays.
inline std::size_t WorkspaceElements(Workspace& w) {
  std::size_t total = 0;
  ForEachArray(w, [&total](auto& a) {
    if constexpr (requires { a.rows(); }) total += a.count();
    else total += static_cast<std::size_t>(a.size());
  });
  return total;
}

}  // namespace quellon::testing
