// What the host tests share: file and event reading, one model builder that enters a
// model call by call, a run that keeps what the callbacks were given, the results read
// back from the XML output, and a fixture that leaves the engine clean.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "../common/test_files.h"

namespace host {

using namespace qtest;

// The recorder's lines, and the texts of the messages of one severity among them.
Lines Events();
Lines Messages(const Lines& events, int severity);

// Setter units: m, degrees, kN, kPa; section stiffnesses in MN and MNm^2.
struct PileInput {
  double x = 0.0, y = 0.0, length = 10.0, diameter = 0.6, rake_x = 0.0, rake_y = 0.0;
  double ea = 8000.0, ei = 190.0, gj = 150.0;
};
// A layer of fine soil (the only ground used: its limits are simple to work out by hand).
struct LayerInput {
  double depth = 0.0, e = 20000.0, de = 0.0, cu = 50.0, alpha = 0.5;
};
struct Model {
  std::vector<PileInput> piles{PileInput{}};
  std::vector<LayerInput> layers{LayerInput{}};
  int elements = 4, increments = 1;
  // The flags set: the LAPACK solver (16), the cap block and its callbacks (25), the pile
  // results in the XML output (27, 28, 31) and the yield counts in the TXT report (29).
  std::set<int> flags{16, 25, 27, 28, 29, 31};
  double fx = 0.0, fy = 0.0, fz = 0.0, mx = 0.0, my = 0.0, mz = 0.0, x = 0.0, y = 0.0;
  double r = 0.0;  // all four hyperbolic constants
  bool unloading = true;
  double free_length = 0.0;
  Model& Flag(int i, bool on) {
    on ? void(flags.insert(i)) : void(flags.erase(i));
    return *this;
  }
};
// Piles 10 m long, 0.6 m across, 3 m apart in a row along X about the origin, in one layer
// of clay of cu 50 kPa and adhesion 0.5, under fz a pile in equal steps.
Model Row(int piles, int elements, int increments, double fz);
// Enters the model through the setters, the tables too unless they exist already.
void Enter(const Model& m, bool create_tables = true);

// What the result callbacks of one increment received, and which came: "stiffnesses",
// "matrix", "centre", "loads", "displacements", "counter".
struct Increment {
  int number = 0;
  std::set<std::string> came;
  std::array<float, 9> k3{};      // GRMAT(1..3, 1..3), row by row
  std::array<float, 36> grmat{};  // column order
  std::array<float, 2> centre_xy{};
  std::array<float, 6> load{}, disp{};  // Fx..Mz; X, Y, Z, about X, about Y, about Z
  float K(int a, int b) const { return grmat[static_cast<std::size_t>(a - 1 + 6 * (b - 1))]; }
};
struct RunRecord {
  int result = -1;
  Lines events;  // the recorder's lines without the window posts, results by kind only
  std::vector<Increment> increments;
  std::string out;  // standard output
  fs::path xml, txt, log;
  Lines Log() const { return ReadLines(log); }
};
// Registers the recorder, opens <dir>/<name>.log, enters m (if given), runs it with
// <name>.xml and <name>.txt, and closes every file so that the outputs can be read.
RunRecord Analyse(const fs::path& dir, const std::string& name, const Model* m);

// The largest difference of two cap movements, displacements against the largest
// displacement and rotations against the largest rotation of the first.
double MovementDifference(const std::array<float, 6>& a, const std::array<float, 6>& b);

// The results of the XML output: by <Piles> block (one per increment), pile, then element
// from the head (0), the toe last, the value lines by name and axis ("Force Z", ...).
struct XmlValue {
  float value = 0.0f, limit = 0.0f;
  bool yield = false;
};
using XmlQuantities = std::map<std::string, XmlValue>;
struct XmlResults {
  bool complete = false;  // ends with the root's closing tag
  int cap_blocks = 0;     // <Pile-Cap> blocks within the output
  std::vector<std::vector<std::vector<XmlQuantities>>> piles;
};
XmlResults ReadXml(const fs::path& path);

class HostTest : public ::testing::Test {
 protected:
  // Closes every file and clears every registration; each test leaves no model behind.
  void TearDown() override;
  ScratchDir scratch{"quellon_host"};
  const fs::path& dir = scratch.path();
  std::string Path(const std::string& name) const { return (dir / name).string(); }
};

}  // namespace host
