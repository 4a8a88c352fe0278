// Shared by the text model and XML tests: a sample model filled straight into the
// records, scratch files, and the LOG of an engine read back as lines.
#pragma once

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "engine/engine.h"
#include "engine/model_tables.h"

namespace quellon::test {

// A fresh scratch path per call, removed with its directory at process exit.
inline std::string ScratchPath(const std::string& name) {
  static const std::filesystem::path dir = [] {
    auto d = std::filesystem::temp_directory_path() / ("quellon_files_" + std::to_string(::getpid()));
    std::filesystem::create_directories(d);
    static struct Cleanup {
      std::filesystem::path d;
      ~Cleanup() {
        std::error_code ec;
        std::filesystem::remove_all(d, ec);
      }
    } cleanup{d};
    return d;
  }();
  static int counter = 0;
  return (dir / (std::to_string(++counter) + "_" + name)).string();
}

inline std::string ReadBytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream s;
  s << in.rdbuf();
  return s.str();
}

inline void WriteBytes(const std::string& path, const std::string& bytes) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out << bytes;
}

// Lines of a CR LF file, without their ends.
inline std::vector<std::string> SplitLines(const std::string& bytes) {
  std::vector<std::string> lines;
  std::size_t from = 0;
  while (from < bytes.size()) {
    std::size_t at = bytes.find('\n', from);
    if (at == std::string::npos) at = bytes.size();
    std::string line = bytes.substr(from, at - from);
    if (!line.empty() && line.back() == '\r') line.pop_back();
    lines.push_back(line);
    from = at + 1;
  }
  return lines;
}

inline std::string JoinLines(const std::vector<std::string>& lines, std::size_t count = std::string::npos) {
  std::string s;
  for (std::size_t i = 0; i < lines.size() && i < count; ++i) s += lines[i] + "\r\n";
  return s;
}

// Opens a LOG for the engine; LogText() closes and reads it.
class ScopedLog {
 public:
  explicit ScopedLog(Engine& e) : e_(e), path_(ScratchPath("engine.log")) {
    e_.files.log.create(path_);
    e_.project.LOGUnit = kLOGUnit;
  }
  std::string Text() {
    e_.files.log.close();
    e_.project.LOGUnit = 0;
    return ReadBytes(path_);
  }

 private:
  Engine& e_;
  std::string path_;
};

// A model that touches every line of the text model file: three piles (one reinforced,
// one plain, one raked both ways), four layers of the four ground types, custom Nq and
// interaction distance. Values are exact in the file's number forms.
inline void FillSampleModel(Engine& e, int increments) {
  Project& pr = e.project;
  pr.Name.assign("Jetty 4 \xE9tage, bent B");
  pr.Description.assign("Sample model for the file tests");
  pr.Year = 2024, pr.Month = 3, pr.Day = 7;
  pr.Filename.assign("C:\\jobs\\jetty4.tmw");
  for (int i : {1, 2, 16, 25, 38}) pr.Flags(i) = 1;
  pr.DynamicModel = 1;
  pr.NonLinear = increments > 1 ? 1 : 0;
  pr.InteractionFlag = 3, pr.InteractionDistance = 12.5f;
  pr.AutoNq = 2, pr.Nq = 30.0f;
  pr.LimitingShaftFriction = 150.0f, pr.LimitingBearingPressure = 4500.0f;
  pr.Rs = 0.5f, pr.Rb = 0.9f, pr.Rl = 0.25f, pr.Rt = 0.0f;
  pr.ElasticUnloading = 1;
  e.actions = Actions{100.0f, -50.5f, 2500.0f, 10.0f, -20.25f, 5.0f, 0.125f, -0.5f, increments};

  Foundation& fd = e.foundation;
  CreatePiles(e, 3);
  fd.NumberOfElements = 4, fd.CapStiffness = 1, fd.FreeStandingLength = 1.25f;
  for (int p = 1; p <= 3; ++p) {
    Pile& pile = fd.Piles(p);
    pile.Name.assign(std::string("Pile ") + static_cast<char>('A' + p - 1));
    pile.Length = 12.0f, pile.ShaftDiameter = 0.6f, pile.BaseDiameter = 0.6f;
    pile.X = -1.5f + 1.5f * static_cast<float>(p - 1), pile.Z = 0.25f;
    pile.EA = pile.UnreinforcedEA = 2500000.0f;
    pile.EIx = pile.UnreinforcedEIx = 75000.0f;
    pile.EIy = pile.UnreinforcedEIy = 75000.0f;
    pile.GJ = pile.UnreinforcedGJ = 57700.0f;
  }
  Pile& reinforced = fd.Piles(1);
  reinforced.ReinforcedLength = 8.5f, reinforced.UnreinforcedEA = 1200000.0f;
  reinforced.UnreinforcedEIx = reinforced.UnreinforcedEIy = 36000.0f, reinforced.UnreinforcedGJ = 27700.0f;
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
  Layer& sand = bh.Layers(1);
  sand.phi = 32.0f, sand.delta = 24.5f, sand.Ks = 0.8f;
  Layer& clay = bh.Layers(2);
  clay.cu = 25.0f, clay.dcu = 2.5f, clay.alpha = 0.6f;
  Layer& rock = bh.Layers(3);
  rock.qu = 5000.0f, rock.k1 = rock.k2 = 0.5f, rock.k3 = 1.25f, rock.k4 = 0.75f, rock.k5 = 1.5f;
  Layer& direct = bh.Layers(4);
  direct.DirectSkinFriction = 150.0f, direct.DirectEndBearing = 5000.0f;
  direct.HasDirectLateral = 1, direct.DirectLateral = 300.0f;
}

}  // namespace quellon::test
