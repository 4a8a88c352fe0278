// Shared set-up of the TXT report tests: a small model in a test's own engine, the TXT
// and LOG units opened on temporary files, and the lines read back.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "engine/engine.h"
#include "engine/model_tables.h"
#include "engine/workspace.h"

namespace quellon::testing {

// A file in the system's temporary folder, unique to the running test, removed at the
// end of the test.
class TempFile {
 public:
  explicit TempFile(const std::string& suffix) {
    const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
    std::string name = std::string("quellon_") + info->test_suite_name() + "_" + info->name() + suffix;
    for (char& c : name)
      if (c == '/') c = '_';
    path_ = (std::filesystem::temp_directory_path() / name).string();
  }
  ~TempFile() {
    std::error_code ec;
    std::filesystem::remove(path_, ec);
  }
  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

// The whole file as bytes.
inline std::string ReadBytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream s;
  s << in.rdbuf();
  return s.str();
}

// The lines of a file written with CR LF ends. A line without its CR LF fails the test.
inline std::vector<std::string> ReadLines(const std::string& path) {
  const std::string bytes = ReadBytes(path);
  std::vector<std::string> lines;
  std::size_t start = 0;
  while (start < bytes.size()) {
    const std::size_t end = bytes.find("\r\n", start);
    if (end == std::string::npos) {
      ADD_FAILURE() << "line without CR LF at byte " << start << " of " << path;
      lines.push_back(bytes.substr(start));
      break;
    }
    lines.push_back(bytes.substr(start, end - start));
    start = end + 2;
  }
  return lines;
}

inline void OpenTXT(Engine& e, const std::string& path) {
  ASSERT_TRUE(e.files.txt.create(path));
  e.project.TXTUnit = kTXTUnit;
}
inline void OpenLOG(Engine& e, const std::string& path) {
  ASSERT_TRUE(e.files.log.create(path));
  e.project.LOGUnit = kLOGUnit;
}

// A model of P vertical piles of n elements in one layer, reset values in force, and
// its workspace. Piles stand on a line along X, 2 m apart.
inline void SmallModel(Engine& e, int piles, int elements, int increments) {
  ResetProject(e);
  ResetActions(e);
  e.actions.NumberOfIncrements = increments;
  e.project.NonLinear = increments > 1;
  e.project.DynamicModel = 0;
  ASSERT_EQ(CreatePiles(e, piles), 1);
  e.foundation.NumberOfElements = elements;
  for (int p = 1; p <= piles; ++p) {
    Pile& q = e.foundation.Piles(p);
    q.Length = 10.0f;
    q.ShaftDiameter = 0.5f;
    q.BaseDiameter = 0.5f;
    q.X = 2.0f * static_cast<float>(p - 1);
    q.EA = q.UnreinforcedEA = 5.0e6f;
    q.EIx = q.UnreinforcedEIx = 1.0e5f;
    q.EIy = q.UnreinforcedEIy = 1.0e5f;
    q.GJ = q.UnreinforcedGJ = 8.0e4f;
  }
  ASSERT_EQ(CreateLayers(e, 1), 1);
  Layer& l = e.borehole.Layers(1);
  l.Ev = l.Eh = 2.0e4f;
  l.Poisson = 0.3f;
  l.GroundType = kFineSoil;
  ASSERT_EQ(CreateWorkspace(e), 1);
}

inline void SetAllFlags(Project& p, bool on) {
  for (int i = 1; i <= kFlagCount; ++i) p.Flags(i) = on ? 1 : 0;
}

}  // namespace quellon::testing
