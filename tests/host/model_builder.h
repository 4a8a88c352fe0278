// A host that builds a model call by call, runs it, and keeps what its callbacks were
// given at full single precision, increment by increment, so that tests can compare
// the numbers of whole analyses with each other and with physics.
#pragma once

#include <array>
#include <filesystem>
#include <string>
#include <vector>

namespace host {

// One pile, in the setters' units: m, degrees, and MN / MNm^2 for the section.
struct PileSpec {
  double x = 0.0, y = 0.0;
  double length = 10.0, diameter = 0.6, base_diameter = 0.6;
  double rake_x = 0.0, rake_y = 0.0;
  double ea = 8000.0, eix = 190.0, eiy = 190.0, gj = 150.0;
};

// One layer: stiffness, and the strength of a fine soil (the only ground the tests use:
// its limits are simple to work out by hand).
struct LayerSpec {
  double depth = 0.0;
  double ev = 20000.0, dev = 0.0, eh = 20000.0, deh = 0.0, poisson = 0.3;
  double cu = 50.0, dcu = 0.0, alpha = 0.5, weight = 18.0;
};

struct ModelSpec {
  std::vector<PileSpec> piles{PileSpec{}};
  std::vector<LayerSpec> layers{LayerSpec{}};
  int elements = 6;
  int increments = 1;
  // Flags 1 to 40; 16 (dense LAPACK solver) and 25 (cap block and its callbacks) set.
  std::array<int, 40> flags = DefaultFlags();
  double fx = 0.0, fy = 0.0, fz = 0.0, mx = 0.0, my = 0.0, mz = 0.0, x = 0.0, y = 0.0;
  double rs = 0.0, rb = 0.0, rl = 0.0, rt = 0.0;
  bool elastic_unloading = true;
  double free_length = 0.0;

  void SetFlag(int i, bool on) { flags[static_cast<std::size_t>(i - 1)] = on ? 1 : 0; }
  static std::array<int, 40> DefaultFlags() {
    std::array<int, 40> f{};
    f[15] = 1;
    f[24] = 1;
    return f;
  }
};

// Enters the model through the setters; the tables are created here. Fails the test on
// a refused call.
void EnterModelSpec(const ModelSpec& m);

// What the result callbacks of one increment received. The flags tell which came.
struct IncrementRecord {
  int number = 0;
  bool stiffnesses = false, matrix = false, centre = false, loads = false, displacements = false,
       counted = false;
  std::array<float, 9> k3{};      // GRMAT(1..3, 1..3), row by row
  std::array<float, 36> grmat{};  // column order: (a, b) at a - 1 + 6(b - 1)
  std::array<float, 2> centre_xy{};
  std::array<float, 6> load{};  // Fx, Fy, Fz, Mx, My, Mz
  std::array<float, 6> disp{};  // X, Y, Z, about X, about Y, about Z
  float K(int a, int b) const { return grmat[static_cast<std::size_t>(a - 1 + 6 * (b - 1))]; }
};

struct RunRecord {
  int result = -1;
  // Every callback in the order of arrival: "create i", "counter i", "message s text",
  // "stiffnesses", "matrix", "centre", "loads", "displacements".
  std::vector<std::string> events;
  std::vector<IncrementRecord> increments;  // one per CreateIncrement call
  std::string stdout_text;
  std::filesystem::path xml, txt, log;

  std::vector<std::string> Messages(int severity) const;
  // LOG lines (read after the run, the LOG closed).
  std::vector<std::string> LogLines() const;
};

struct RunOptions {
  bool txt = true;
  bool log = true;
  // Called from the CreateIncrement callback with the increment, after it is recorded.
  void (*on_create)(int increment) = nullptr;
};

// Registers the recording callbacks, opens a LOG, enters the model, runs it with
// <dir>/<name>.xml (and .txt), then closes every file so that the outputs can be read.
// The callbacks stay registered until the fixture clears them.
RunRecord RunModel(const ModelSpec& m, const std::filesystem::path& dir, const std::string& name,
                   const RunOptions& options = {});
// The same for the model that the engine holds already.
RunRecord RunEnteredModel(const std::filesystem::path& dir, const std::string& name,
                          const RunOptions& options = {});

// The largest difference of two cap movements, displacements against the largest
// displacement and rotations against the largest rotation of the first.
double MovementDifference(const std::array<float, 6>& a, const std::array<float, 6>& b);

}  // namespace host
