// The model of the whole-run benchmarks: P identical vertical piles 20 m long, 0.8 m
// across, at 3 m spacing in a square grid (the last row partly filled when P is not a
// square), n elements each, in two layers of clay over a rigid layer at 45 m. The
// strengths and weights are those a non-linear run needs; the project's flags, the
// solver route and the loads are each benchmark's own.
#pragma once

#include <cmath>

#include "engine/engine.h"
#include "engine/model_tables.h"

namespace quellon {

inline void FillSquareClayGroup(Engine& e, int piles, int elements) {
  ResetProject(e);
  ResetActions(e);
  CreateLayers(e, 2);
  Layer& top = e.borehole.Layers(1);
  top.DepthToTop = 0.0f;
  top.Ev = 20000.0f;
  top.dEv = 1000.0f;
  top.Eh = 15000.0f;
  top.dEh = 700.0f;
  top.Poisson = 0.4f;
  top.GroundType = kFineSoil;
  top.cu = 40.0f;
  top.dcu = 4.0f;
  top.alpha = 0.6f;
  top.WeightDensity = 8.0f;
  Layer& deep = e.borehole.Layers(2);
  deep.DepthToTop = 12.0f;
  deep.Ev = 80000.0f;
  deep.dEv = 2000.0f;
  deep.Eh = 60000.0f;
  deep.dEh = 1500.0f;
  deep.Poisson = 0.3f;
  deep.GroundType = kFineSoil;
  deep.cu = 120.0f;
  deep.dcu = 6.0f;
  deep.alpha = 0.5f;
  deep.WeightDensity = 10.0f;
  e.borehole.LayerAveraging = 2;
  e.borehole.DepthToRigidLayer = 45.0f;

  const int columns = static_cast<int>(std::ceil(std::sqrt(static_cast<double>(piles))));
  CreatePiles(e, piles);
  e.foundation.NumberOfElements = elements;
  for (int p = 1; p <= piles; ++p) {
    Pile& pile = e.foundation.Piles(p);
    pile.Number = p;
    pile.Length = 20.0f;
    pile.ShaftDiameter = pile.BaseDiameter = 0.8f;
    pile.X = 3.0f * static_cast<float>((p - 1) % columns);
    pile.Y = 3.0f * static_cast<float>((p - 1) / columns);
    pile.ReinforcedLength = 20.0f;
    pile.EA = pile.UnreinforcedEA = 1.5e7f;
    pile.EIx = pile.EIy = pile.UnreinforcedEIx = pile.UnreinforcedEIy = 6.0e5f;
    pile.GJ = pile.UnreinforcedGJ = 4.6e5f;
  }
}

}  // namespace quellon
