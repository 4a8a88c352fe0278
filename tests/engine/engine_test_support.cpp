#include "engine_test_support.h"

#include <unistd.h>

#include <fstream>
#include <sstream>

#include "engine/model_tables.h"

namespace quellon::testing_support {

ScratchDir::ScratchDir() {
  static int serial = 0;
  const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
  path_ = fs::temp_directory_path() / ("quellon_engine_" + std::to_string(getpid()) + "_" +
                                       std::to_string(++serial) + "_" + (info ? info->name() : "x"));
  fs::remove_all(path_);
  fs::create_directories(path_);
}

ScratchDir::~ScratchDir() {
  std::error_code ignored;
  fs::remove_all(path_, ignored);
}

std::vector<std::string> ReadLines(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::vector<std::string> lines;
  for (std::string line; std::getline(in, line);) {
    if (line.empty() || line.back() != '\r') ADD_FAILURE() << "line without CR LF in " << path;
    if (!line.empty() && line.back() == '\r') line.pop_back();
    lines.push_back(line);
  }
  return lines;
}

std::size_t Find(const std::vector<std::string>& lines, const std::string& text, std::size_t from) {
  for (std::size_t i = from; i < lines.size(); ++i)
    if (lines[i] == text) return i;
  return std::string::npos;
}

std::vector<std::string>& Received() {
  static std::vector<std::string> messages;
  return messages;
}

void RecordMessage(const int* severity, const char* text) {
  Received().push_back(std::to_string(*severity) + " " + text);
}

void FillSmallModel(Engine& e, int piles, int elements, int increments) {
  ASSERT_EQ(CreateLayers(e, 1), 1);
  ASSERT_EQ(CreatePiles(e, piles), 1);
  Layer& l = e.borehole.Layers(1);
  l.Ev = l.Eh = 20000.0f;
  l.dEv = l.dEh = 500.0f;
  l.Poisson = 0.3f;
  l.GroundType = kFineSoil;
  l.cu = 60.0f;
  l.alpha = 0.5f;
  l.WeightDensity = 18.0f;
  e.borehole.LayerAveraging = 2;
  e.foundation.NumberOfElements = elements;
  for (int p = 1; p <= piles; ++p) {
    Pile& pile = e.foundation.Piles(p);
    pile.X = 3.0f * static_cast<float>(p - 1);
    pile.Length = 12.0f;
    pile.ShaftDiameter = pile.BaseDiameter = 0.6f;
    pile.ReinforcedLength = 12.0f;
    pile.EA = pile.UnreinforcedEA = 8.0e6f;
    pile.EIx = pile.EIy = pile.UnreinforcedEIx = pile.UnreinforcedEIy = 1.9e5f;
    pile.GJ = pile.UnreinforcedGJ = 1.5e5f;
  }
  e.project.Rs = e.project.Rb = e.project.Rl = e.project.Rt = 0.9f;
  e.project.AutoNq = 1;
  e.project.InteractionFlag = 1;
  e.project.DynamicModel = 1;
  e.project.Flags(16) = 1;
  e.actions.NumberOfIncrements = increments;
  e.project.NonLinear = increments > 1 ? 1 : 0;
  e.actions.Fz = 200.0f * static_cast<float>(piles);
}

void ResetTheEngine() {
  Engine& e = TheEngine();
  for (TextFile* f : {&e.files.tmw, &e.files.tmk, &e.files.xml, &e.files.txt, &e.files.log}) f->close();
  e.project = Project{};
  e.actions = Actions{};
  e.borehole = Borehole{};
  e.foundation = Foundation{};
  e.callbacks = RunCallbacks{};
  e.window_observer = nullptr;
  ReleaseWorkspace(e);
  e.running = false;
  e.delivering_message = false;
  e.close_txt_after_run = e.close_all_after_run = false;
  e.memory_probe = &AvailableMemoryBytes;
}

std::size_t WorkspaceElements(Workspace& w) {
  std::size_t total = 0;
  ForEachArray(w, [&total](auto& a) {
    if constexpr (requires { a.rows(); }) {
      total += a.count();
    } else {
      total += static_cast<std::size_t>(a.size());
    }
  });
  return total;
}

}  // namespace quellon::testing_support
