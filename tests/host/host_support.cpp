#include "host_support.h"

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <regex>
#include <sstream>

#include "host_recorder.h"
#include "quellon.h"

namespace host {

Lines Events() {
  Lines lines;
  std::istringstream in(recorder_text());
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

Lines Messages(const Lines& events, int severity) {
  const std::string prefix = "message " + std::to_string(severity) + " ";
  Lines texts;
  for (const std::string& e : events)
    if (e.rfind(prefix, 0) == 0) texts.push_back(e.substr(prefix.size()));
  return texts;
}

Model Row(int piles, int elements, int increments, double fz) {
  Model m;
  m.piles.resize(static_cast<std::size_t>(piles));
  for (int p = 0; p < piles; ++p) m.piles[p].x = 3.0 * p - 1.5 * (piles - 1);
  m.elements = elements, m.increments = increments, m.fz = fz * piles;
  return m;
}

void Enter(const Model& m, bool create_tables) {
  const int layers = static_cast<int>(m.layers.size()), piles = static_cast<int>(m.piles.size());
  int flags[40] = {};
  for (int i : m.flags) flags[i - 1] = 1;
  // Every setter must accept its value: ok stays 1 only if all of them do.
  int ok = create_tables ? QuellonSetBoreholeNumberOfLayers(layers) & QuellonSetNumberOfPiles(piles) : 1;
  ok &= QuellonSetProjectFlags(flags, 40) & QuellonSetBoreholeLayerAveraging(2);
  for (int l = 1; l <= layers; ++l) {
    const LayerInput& s = m.layers[l - 1];
    ok &= QuellonSetBoreholeLayerDepth(l, s.depth) & QuellonSetGroundType(l, 2) &
          QuellonSetBoreholeLayerStiffness(l, s.e, s.de, s.e, s.de, 0.3) &
          QuellonSetSoilUndrainedShearStrength(l, s.cu, 0.0) &
          QuellonSetSoilUndrainedInterfaceParameter(l, s.alpha) & QuellonSetGroundWeightDensity(l, 18.0);
  }
  ok &= QuellonSetNumberOfPileElements(m.elements) & QuellonSetPileInteractionFlag(1);
  for (int p = 1; p <= piles; ++p) {
    const PileInput& s = m.piles[p - 1];
    ok &= QuellonSetPileCoordinates(p, s.x, s.y, 0.0) & QuellonSetPileRake(p, s.rake_x, s.rake_y) &
          QuellonSetPileDimensions(p, s.length, s.diameter, 0.0, s.diameter) &
          QuellonSetPileReinforcedSectionProperties(p, s.length, s.ea, s.ei, s.ei, s.gj) &
          QuellonSetPileUnreinforcedSectionProperties(p, s.ea, s.ei, s.ei, s.gj);
  }
  ok &= QuellonSetPileFreeStandingLength(m.free_length) & QuellonSetProjectHyperbolicFactors(m.r, m.r, m.r, m.r) &
        QuellonSetProjectElasticUnloadingFlag(m.unloading ? 1 : 0) & QuellonSetNumberOfLoadIncrements(m.increments) &
        QuellonSetActions(m.fx, m.fy, m.fz, m.mx, m.my, m.mz, m.x, m.y);
  ASSERT_EQ(ok, 1) << "a setter refused its value";
}

namespace {

// The reals after the first word of an event line, read back exactly.
template <std::size_t N>
void Reals(const std::string& event, std::array<float, N>& out) {
  const char* p = event.c_str() + event.find(' ');
  for (float& v : out) v = std::strtof(p, const_cast<char**>(&p));
}

// Sorts the events of a run into its increments.
void Collect(RunRecord& run, const Lines& events) {
  for (const std::string& e : events) {
    const std::string kind = e.substr(0, e.find(' '));
    if (kind == "window") continue;
    run.events.push_back(kind == "message" || kind == "create" || kind == "counter" ? e : kind);
    if (kind == "create") run.increments.emplace_back().number = std::stoi(e.substr(7));
    if (kind == "message" || kind == "create" || run.increments.empty()) continue;  // strays show in the events
    Increment& r = run.increments.back();
    r.came.insert(kind);
    EXPECT_TRUE(kind != "counter" || std::stoi(e.substr(8)) == r.number) << "counter of another increment";
    if (kind == "stiffnesses") Reals(e, r.k3);
    if (kind == "matrix") Reals(e, r.grmat);
    if (kind == "centre") Reals(e, r.centre_xy);
    if (kind == "loads") Reals(e, r.load);
    if (kind == "displacements") Reals(e, r.disp);
  }
}

}  // namespace

RunRecord Analyse(const fs::path& dir, const std::string& name, const Model* m) {
  RunRecord run;
  run.xml = dir / (name + ".xml"), run.txt = dir / (name + ".txt"), run.log = dir / (name + ".log");
  recorder_register_all(1);
  EXPECT_EQ(QuellonCreateLOGFile(run.log.c_str()), 1);
  if (m != nullptr) Enter(*m);
  if (testing::Test::HasFatalFailure()) return run;
  recorder_clear();
  testing::internal::CaptureStdout();
  run.result = QuellonRunAnalysis2(run.xml.c_str(), run.txt.c_str());
  run.out = testing::internal::GetCapturedStdout();
  Collect(run, Events());
  QuellonCloseAllFiles();
  return run;
}

double MovementDifference(const std::array<float, 6>& a, const std::array<float, 6>& b) {
  const double move = std::max({std::fabs(a[0]), std::fabs(a[1]), std::fabs(a[2])});
  const double turn = std::max({std::fabs(a[3]), std::fabs(a[4]), std::fabs(a[5])});
  double worst = 0.0;
  for (int i = 0; i < 6; ++i) {
    const double d = std::fabs(double(a[i]) - double(b[i]));
    if (d > 0.0) worst = std::max(worst, d / (i < 3 ? move : turn));  // infinite against a zero scale
  }
  return worst;
}

// The XML output read line by line, as the engine writes it: one value line per quantity,
// "<Name axis=.. value=.. limit=.. units=.. yield=../>", within <Element> or <Toe>.
XmlResults ReadXml(const fs::path& path) {
  static const std::regex kValue(
      R"re(<([\w-]+)(?: axis="(\w)")? value="([^"]*)"(?: limit="([^"]*)")?(?: units="[^"]*")?(?: yield="(\w+)")?/>)re");
  XmlResults r;
  const Lines lines = ReadLines(path);
  r.complete = !lines.empty() && lines.back() == "</Tolmark>";
  bool output = false, element = false;
  std::smatch m;
  for (const std::string& line : lines) {
    const std::string t = line.substr(std::min(line.find_first_not_of(' '), line.size()));
    output = output || t == "<Output>";
    if (!output) continue;
    if (t == "<Piles>") r.piles.emplace_back();
    if (t.rfind("<Pile number=", 0) == 0) r.piles.back().emplace_back();
    if (t.rfind("<Element ", 0) == 0 || t == "<Toe>") r.piles.back().back().emplace_back(), element = true;
    if (t == "</Element>" || t == "</Toe>") element = false;
    r.cap_blocks += t == "<Pile-Cap>" ? 1 : 0;
    if (element && std::regex_match(t, m, kValue))
      r.piles.back().back().back()[m[1].str() + (m[2].matched ? " " : "") + m[2].str()] = {
          std::stof(m[3]), m[4].matched ? std::stof(m[4]) : 0.0f, m[5] == "true"};
  }
  return r;
}

void HostTest::TearDown() {
  QuellonCloseAllFiles();
  recorder_register_all(0);
  recorder_clear();
}

}  // namespace host
