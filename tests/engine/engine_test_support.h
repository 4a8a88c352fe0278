// Shared by the engine's internal tests: scratch folders, files read back, a message
// recorder and a small valid model written straight into the records.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "engine/engine.h"
#include "engine/model_tables.h"

namespace quellon::testing_support {

namespace fs = std::filesystem;

// A fresh folder under the system's temporary folder, removed at the end of scope.
class ScratchDir {
 public:
  ScratchDir() {
    static int serial = 0;
    path_ = fs::temp_directory_path() / ("quellon_engine_" + std::to_string(getpid()) + "_" + std::to_string(++serial));
    fs::create_directories(path_);
  }
  ~ScratchDir() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
  }
  fs::path operator/(const std::string& name) const { return path_ / name; }

 private:
  fs::path path_;
};

// The lines of a CR LF text file without their ends, and the first one equal to `text`.
inline std::vector<std::string> ReadLines(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::vector<std::string> lines;
  for (std::string line; std::getline(in, line);) {
    if (line.empty() || line.back() != '\r') ADD_FAILURE() << "line without CR LF in " << path;
    lines.push_back(line.substr(0, line.find('\r')));
  }
  return lines;
}
inline std::size_t Find(const std::vector<std::string>& lines, const std::string& text) {
  const auto at = std::find(lines.begin(), lines.end(), text);
  return at == lines.end() ? std::string::npos : static_cast<std::size_t>(at - lines.begin());
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

// Total elements held by the workspace's arrays.
inline std::size_t WorkspaceElements(Workspace& w) {
  std::size_t total = 0;
  ForEachArray(w, [&total](auto& a) {
    if constexpr (requires { a.rows(); }) total += a.count();
    else total += static_cast<std::size_t>(a.size());
  });
  return total;
}

}  // namespace quellon::testing_support
