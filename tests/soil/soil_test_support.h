// Small models for the soil tests: a ground of layers, a group of piles entering the
// ground at their heads (level 0), and the arrays that the assembly writes.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "engine/engine.h"
#include "engine/model_tables.h"
#include "engine/workspace.h"
#include "soil/soil.h"
#include "soil/soil_matrices.h"

namespace quellon::soil_test {

struct LayerData {
  float top, Ev, dEv, Eh, dEh, nu;
};
struct PileData {
  float L, Ds, Db, rake_x, rake_y, x, y, Di = 0.0f;
};

// A vertical pile of length 10 and diameter 1 at the origin; the grounds of the worked models.
inline const PileData kPile{10, 1, 1, 0, 0, 0, 0};
inline std::vector<LayerData> OneLayer() { return {{0, 10000, 0, 10000, 0, 0.25f}}; }
inline std::vector<LayerData> TwoLayers() {
  return {{0, 20000, 1000, 15000, 500, 0.3f}, {6, 80000, 0, 60000, 0, 0.2f}};
}

struct Model {
  Engine e;
  Model(const std::vector<LayerData>& ground, int averaging, float rigid, int n, const std::vector<PileData>& piles,
        int flag = 1, float Mz = 0.0f, float distance = 0.0f) {
    EXPECT_EQ(CreateLayers(e, static_cast<int>(ground.size())), 1);
    for (int k = 1; k <= static_cast<int>(ground.size()); ++k) {
      const LayerData& d = ground[static_cast<std::size_t>(k - 1)];
      Layer& l = e.borehole.Layers(k);
      l.DepthToTop = d.top, l.Ev = d.Ev, l.dEv = d.dEv, l.Eh = d.Eh, l.dEh = d.dEh, l.Poisson = d.nu;
    }
    e.borehole.LayerAveraging = averaging, e.borehole.DepthToRigidLayer = rigid;
    EXPECT_EQ(CreatePiles(e, static_cast<int>(piles.size())), 1);
    e.foundation.NumberOfElements = n;
    for (int k = 1; k <= static_cast<int>(piles.size()); ++k) {
      const PileData& s = piles[static_cast<std::size_t>(k - 1)];
      Pile& p = e.foundation.Piles(k);
      p.Length = s.L, p.ShaftDiameter = s.Ds, p.BaseDiameter = s.Db, p.InternalDiameter = s.Di;
      p.RakeX = s.rake_x, p.RakeY = s.rake_y;
      p.X = p.SoilEntryX = s.x, p.Y = p.SoilEntryY = s.y, p.Z = p.SoilEntryZ = 0.0f;
    }
    e.project.InteractionFlag = flag, e.project.InteractionDistance = distance, e.actions.Mz = Mz;
    MakePileFrames(e.foundation);
  }
  // G, soil_K, pair_K and the table of vertical moduli, from the piles as they now stand.
  void CreateArrays() {
    MakePileFrames(e.foundation);
    const int M = UnknownsPerPile(e), N = NumberOfUnknowns(e);
    EXPECT_EQ(Create2DRealMatrix(e, e.ws.G, N, N) * Create2DRealMatrix(e, e.ws.soil_K, M, M) *
                  Create2DRealMatrix(e, e.ws.pair_K, M, M) * YamashitaVerticalStiffnessAverageAllPiles(e),
              1);
  }
  // Every pile in order, with the pile handled before as the reference for reuse.
  Model& Assemble() {
    CreateArrays();
    for (int p = 1; p <= e.foundation.NumberOfPiles; ++p) {
      AssembleSoilFlexibility(e, p);
      e.project.ReferencePile = p;
    }
    return *this;
  }
  // Entry (u, v) of the block of source pile q on field pile p.
  float Block(int p, int q, int u, int v) const {
    const int M = UnknownsPerPile(e);
    return e.ws.G(M * (p - 1) + u, M * (q - 1) + v);
  }
};

// `printed` is a value given to `figures` significant figures: the computed value must round to it.
inline ::testing::AssertionResult ToFigures(float actual, double printed, int figures) {
  const double half_unit = 0.5 * std::pow(10.0, std::floor(std::log10(std::fabs(printed))) - (figures - 1));
  if (std::fabs(static_cast<double>(actual) - printed) <= half_unit) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << actual << " does not round to " << printed << " (" << figures << " figures)";
}

}  // namespace quellon::soil_test
