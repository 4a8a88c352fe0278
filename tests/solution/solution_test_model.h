// Small groups for the tests of the pile and group solution: the common small model with
// its piles placed and raked, and a soil matrix written straight into G.
#pragma once

#include <memory>
#include <vector>

#include "../common/engine_support.h"
#include "solution/group_stiffness.h"
#include "solution/solution.h"

namespace quellon::testing {

struct PileSpec {
  float x = 0, y = 0;
  float rake_x = 0, rake_y = 0;
};

// The small model (piles of length 10 and diameter 0.5, EA 5e6 kN, EI 1e5 kNm^2, n elements
// each, one layer) with the heads and rakes given. The workspace is created; nothing else
// has run.
inline std::unique_ptr<Engine> MakeGroup(const std::vector<PileSpec>& piles, int n, int increments = 1) {
  auto e = std::make_unique<Engine>();
  SmallModel(*e, static_cast<int>(piles.size()), n, increments);
  for (std::size_t k = 0; k < piles.size(); ++k) {
    Pile& p = e->foundation.Piles(static_cast<int>(k) + 1);
    p.X = piles[k].x, p.Y = piles[k].y, p.RakeX = piles[k].rake_x, p.RakeY = piles[k].rake_y;
  }
  return e;
}

// Everything before the increments: geometry, sections, the per-pile blocks of D and UBCV,
// with a diagonal soil matrix of a real soil's order (m/kPa) in G.
inline void Assemble(Engine& e) {
  PrepareGroupGeometry(e);
  PileStiffnessesAllPiles(e);
  e.ws.G.fill(0.0f);
  for (int u = 1; u <= e.ws.G.rows(); ++u) e.ws.G(u, u) = 2.0e-4f;
  for (int p = 1; p <= e.foundation.NumberOfPiles; ++p) {
    AssemblePileFlexibility(e, p);
    BuildBoundaryConditionVectors(e, p);
  }
}

}  // namespace quellon::testing
