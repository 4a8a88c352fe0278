// Small models for the tests of the pile and group solution: an engine with its piles
// and workspace, and a synthetic soil matrix written straight into G.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

#include "engine/engine.h"
#include "engine/model_tables.h"
#include "engine/workspace.h"
#include "solution/group_stiffness.h"
#include "solution/solution.h"

namespace quellon::testing {

struct PileSpec {
  float x = 0, y = 0;
  float rake_x = 0, rake_y = 0;
};

// P piles of length 10, diameter 0.8, concrete section (EA 1.5e7 kN, EI 8e5 kNm^2,
// GJ 6e5 kNm^2) reinforced over their whole length, n elements each, one layer at the
// surface. The workspace is created; nothing else has run.
inline std::unique_ptr<Engine> MakeGroup(const std::vector<PileSpec>& piles, int n, int increments = 1) {
  auto e = std::make_unique<Engine>();
  e->foundation.NumberOfElements = n;
  CreatePiles(*e, static_cast<int>(piles.size()));
  CreateLayers(*e, 1);
  e->borehole.Layers(1).DepthToTop = 0.0f;
  for (std::size_t k = 0; k < piles.size(); ++k) {
    Pile& p = e->foundation.Piles(static_cast<int>(k) + 1);
    p.X = piles[k].x, p.Y = piles[k].y, p.RakeX = piles[k].rake_x, p.RakeY = piles[k].rake_y;
    p.Length = p.ReinforcedLength = 10.0f;
    p.ShaftDiameter = p.BaseDiameter = 0.8f;
    p.EA = p.UnreinforcedEA = 1.5e7f;
    p.EIx = p.UnreinforcedEIx = p.EIy = p.UnreinforcedEIy = 8.0e5f;
    p.GJ = p.UnreinforcedGJ = 6.0e5f;
  }
  e->actions.NumberOfIncrements = increments;
  e->project.NonLinear = increments > 1;
  EXPECT_EQ(CreateWorkspace(*e), 1);
  return e;
}

// A soil matrix with the features the solution relies on: every unknown has its own
// flexibility (m/kPa, of the order of a real soil's), and equal unknowns of two piles
// interact in proportion to 1 / (1 + distance between the heads). It depends on the
// relative positions only, is symmetric and diagonally dominant.
inline void WriteSyntheticSoil(Engine& e) {
  const int n = e.foundation.NumberOfElements, M = UnknownsPerPile(e), P = e.foundation.NumberOfPiles;
  e.ws.G.fill(0.0f);
  for (int p = 1; p <= P; ++p)
    for (int q = 1; q <= P; ++q) {
      const float dx = e.foundation.Piles(p).X - e.foundation.Piles(q).X;
      const float dy = e.foundation.Piles(p).Y - e.foundation.Piles(q).Y;
      const float f = p == q ? 1.0f : 0.25f / (1.0f + std::sqrt(dx * dx + dy * dy));
      for (int u = 1; u <= M; ++u)  // shaft shear, base, transverse, torsion
        e.ws.G((p - 1) * M + u, (q - 1) * M + u) = f * (u <= n ? 2.0e-4f : u == n + 1 ? 1.0e-4f : u <= 3 * n + 1 ? 1.2e-4f : 3.0e-4f);
    }
}

// Everything before the increments: geometry, sections, the per-pile blocks of D and
// UBCV, with the synthetic soil in G.
inline void Assemble(Engine& e) {
  PrepareGroupGeometry(e);
  PileStiffnessesAllPiles(e);
  WriteSyntheticSoil(e);
  for (int p = 1; p <= e.foundation.NumberOfPiles; ++p) {
    AssemblePileFlexibility(e, p);
    BuildBoundaryConditionVectors(e, p);
  }
}

}  // namespace quellon::testing
