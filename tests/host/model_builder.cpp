#include "model_builder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>

#include "host_support.h"
#include "quellon.h"

namespace host {

void EnterModelSpec(const ModelSpec& m) {
  const int layers = static_cast<int>(m.layers.size());
  const int piles = static_cast<int>(m.piles.size());
  ASSERT_EQ(QuellonSetBoreholeNumberOfLayers(layers), 1);
  ASSERT_EQ(QuellonSetNumberOfPiles(piles), 1);
  ASSERT_EQ(QuellonSetProjectFlags(m.flags.data(), 40), 1);
  ASSERT_EQ(QuellonSetBoreholeLayerAveraging(2), 1);
  for (int l = 1; l <= layers; ++l) {
    const LayerSpec& s = m.layers[static_cast<std::size_t>(l - 1)];
    ASSERT_EQ(QuellonSetBoreholeLayerDepth(l, s.depth), 1);
    ASSERT_EQ(QuellonSetBoreholeLayerStiffness(l, s.ev, s.dev, s.eh, s.deh, s.poisson), 1);
    ASSERT_EQ(QuellonSetGroundType(l, 2), 1);
    ASSERT_EQ(QuellonSetSoilUndrainedShearStrength(l, s.cu, s.dcu), 1);
    ASSERT_EQ(QuellonSetSoilUndrainedInterfaceParameter(l, s.alpha), 1);
    ASSERT_EQ(QuellonSetGroundWeightDensity(l, s.weight), 1);
  }
  ASSERT_EQ(QuellonSetNumberOfPileElements(m.elements), 1);
  ASSERT_EQ(QuellonSetPileInteractionFlag(1), 1);
  for (int p = 1; p <= piles; ++p) {
    const PileSpec& s = m.piles[static_cast<std::size_t>(p - 1)];
    const std::string name = std::string("P").append(std::to_string(p));
    ASSERT_EQ(QuellonSetPileName(p, name.c_str(), static_cast<int>(name.size())), 1);
    ASSERT_EQ(QuellonSetPileCoordinates(p, s.x, s.y, 0.0), 1);
    ASSERT_EQ(QuellonSetPileDimensions(p, s.length, s.diameter, 0.0, s.base_diameter), 1);
    ASSERT_EQ(QuellonSetPileRake(p, s.rake_x, s.rake_y), 1);
    ASSERT_EQ(QuellonSetPileReinforcedSectionProperties(p, s.length, s.ea, s.eix, s.eiy, s.gj), 1);
    ASSERT_EQ(QuellonSetPileUnreinforcedSectionProperties(p, s.ea, s.eix, s.eiy, s.gj), 1);
  }
  ASSERT_EQ(QuellonSetPileFreeStandingLength(m.free_length), 1);
  ASSERT_EQ(QuellonSetProjectHyperbolicFactors(m.rs, m.rb, m.rl, m.rt), 1);
  ASSERT_EQ(QuellonSetProjectElasticUnloadingFlag(m.elastic_unloading ? 1 : 0), 1);
  ASSERT_EQ(QuellonSetNumberOfLoadIncrements(m.increments), 1);
  ASSERT_EQ(QuellonSetActions(m.fx, m.fy, m.fz, m.mx, m.my, m.mz, m.x, m.y), 1);
}

namespace {

// The run being recorded; the callbacks are plain C functions, so they find it here.
RunRecord* current = nullptr;
void (*create_hook)(int) = nullptr;

IncrementRecord* Latest() {
  if (current == nullptr || current->increments.empty()) {
    ADD_FAILURE() << "a result callback outside an increment";
    return nullptr;
  }
  return &current->increments.back();
}

void Event(const std::string& text) {
  if (current != nullptr) current->events.push_back(text);
}

void OnMessage(const int* severity, const char* text) {
  Event("message " + std::to_string(*severity) + " " + text);
}

void OnCreate(const int* i) {
  if (current == nullptr) return;
  Event("create " + std::to_string(*i));
  IncrementRecord r;
  r.number = *i;
  current->increments.push_back(r);
  if (create_hook != nullptr) create_hook(*i);
}

void OnCounter(const int* i) {
  if (current == nullptr) return;
  Event("counter " + std::to_string(*i));
  if (IncrementRecord* r = Latest()) {
    EXPECT_EQ(r->number, *i) << "counter for another increment than the one created last";
    r->counted = true;
  }
}

void OnStiffnesses(const float* k11, const float* k12, const float* k13, const float* k21, const float* k22,
                   const float* k23, const float* k31, const float* k32, const float* k33) {
  if (current == nullptr) return;
  Event("stiffnesses");
  if (IncrementRecord* r = Latest()) {
    r->stiffnesses = true;
    r->k3 = {*k11, *k12, *k13, *k21, *k22, *k23, *k31, *k32, *k33};
  }
}

void OnMatrix(const float* grmat) {
  if (current == nullptr) return;
  Event("matrix");
  if (IncrementRecord* r = Latest()) {
    r->matrix = true;
    std::memcpy(r->grmat.data(), grmat, sizeof(float) * 36);
  }
}

void OnCentre(const float* x, const float* y) {
  if (current == nullptr) return;
  Event("centre");
  if (IncrementRecord* r = Latest()) {
    r->centre = true;
    r->centre_xy = {*x, *y};
  }
}

void OnLoads(const float* fx, const float* fy, const float* fz, const float* mx, const float* my, const float* mz) {
  if (current == nullptr) return;
  Event("loads");
  if (IncrementRecord* r = Latest()) {
    r->loads = true;
    r->load = {*fx, *fy, *fz, *mx, *my, *mz};
  }
}

void OnDisplacements(const float* dx, const float* dy, const float* dz, const float* rx, const float* ry,
                     const float* rz) {
  if (current == nullptr) return;
  Event("displacements");
  if (IncrementRecord* r = Latest()) {
    r->displacements = true;
    r->disp = {*dx, *dy, *dz, *rx, *ry, *rz};
  }
}

}  // namespace

std::vector<std::string> RunRecord::Messages(int severity) const { return host::Messages(events, severity); }

std::vector<std::string> RunRecord::LogLines() const { return ReadLines(log); }

namespace {

RunRecord Prepare(const std::filesystem::path& dir, const std::string& name, const RunOptions& options) {
  RunRecord run;
  run.xml = dir / (name + ".xml");
  if (options.txt) run.txt = dir / (name + ".txt");
  if (options.log) run.log = dir / (name + ".log");
  QuellonSetProjectMessageCallback(OnMessage);
  QuellonSetProjectCounterCallback(OnCounter);
  QuellonSetCreateIncrementCallback(OnCreate);
  QuellonSetPileCapLoadsCallback(OnLoads);
  QuellonSetPileCapDisplacementsCallback(OnDisplacements);
  QuellonSetForceDisplacementStiffnessesCallback(OnStiffnesses);
  QuellonSetStiffnessMatrixCallback(OnMatrix);
  QuellonSetPileCapCentreOfRotationCallback(OnCentre);
  if (options.log) {
    EXPECT_EQ(QuellonCreateLOGFile(run.log.c_str()), 1);
  }
  return run;
}

void Execute(RunRecord& run, const RunOptions& options) {
  current = &run;
  create_hook = options.on_create;
  testing::internal::CaptureStdout();
  run.result = options.txt ? QuellonRunAnalysis2(run.xml.c_str(), run.txt.c_str())
                           : QuellonRunAnalysis1(run.xml.c_str());
  run.stdout_text = testing::internal::GetCapturedStdout();
  current = nullptr;
  create_hook = nullptr;
  QuellonCloseAllFiles();
}

}  // namespace

RunRecord RunModel(const ModelSpec& m, const std::filesystem::path& dir, const std::string& name,
                   const RunOptions& options) {
  RunRecord run = Prepare(dir, name, options);
  EnterModelSpec(m);
  if (!testing::Test::HasFatalFailure()) Execute(run, options);
  return run;
}

RunRecord RunEnteredModel(const std::filesystem::path& dir, const std::string& name, const RunOptions& options) {
  RunRecord run = Prepare(dir, name, options);
  Execute(run, options);
  return run;
}

double MovementDifference(const std::array<float, 6>& a, const std::array<float, 6>& b) {
  const double move = std::max({std::fabs(a[0]), std::fabs(a[1]), std::fabs(a[2])});
  const double turn = std::max({std::fabs(a[3]), std::fabs(a[4]), std::fabs(a[5])});
  double worst = 0.0;
  for (int i = 0; i < 6; ++i) {
    const double d = std::fabs(double(a[i]) - b[i]);
    if (d > 0.0) worst = std::max(worst, d / (i < 3 ? move : turn));  // infinite against a zero scale
  }
  return worst;
}

}  // namespace host
