// Building small models for the soil tests: a ground of layers, a group of piles with
// their soil entry points set as the geometry step of a run would set them, and the
// arrays that the assembly writes.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <string>
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
  float L, Ds, Db, rake_x, rake_y, x, y;
  float Di = 0.0f;
};

inline void SetGround(Engine& e, const std::vector<LayerData>& layers, int averaging, float rigid) {
  ASSERT_EQ(CreateLayers(e, static_cast<int>(layers.size())), 1);
  for (std::size_t k = 0; k < layers.size(); ++k) {
    Layer& l = e.borehole.Layers(static_cast<int>(k) + 1);
    l.DepthToTop = layers[k].top;
    l.Ev = layers[k].Ev;
    l.dEv = layers[k].dEv;
    l.Eh = layers[k].Eh;
    l.dEh = layers[k].dEh;
    l.Poisson = layers[k].nu;
  }
  e.borehole.LayerAveraging = averaging;
  e.borehole.DepthToRigidLayer = rigid;
}

// Piles enter the ground at their head, at level 0.
inline void SetPiles(Engine& e, int n, const std::vector<PileData>& piles) {
  ASSERT_EQ(CreatePiles(e, static_cast<int>(piles.size())), 1);
  e.foundation.NumberOfElements = n;
  for (std::size_t k = 0; k < piles.size(); ++k) {
    Pile& p = e.foundation.Piles(static_cast<int>(k) + 1);
    const PileData& s = piles[k];
    p.Length = s.L;
    p.ShaftDiameter = s.Ds;
    p.InternalDiameter = s.Di;
    p.BaseDiameter = s.Db;
    p.RakeX = s.rake_x;
    p.RakeY = s.rake_y;
    p.X = p.SoilEntryX = s.x;
    p.Y = p.SoilEntryY = s.y;
    p.Z = p.SoilEntryZ = 0.0f;
  }
}

// G, soil_K, pair_K and the table of vertical moduli.
inline void CreateSoilArrays(Engine& e) {
  const int M = UnknownsPerPile(e);
  const int N = NumberOfUnknowns(e);
  ASSERT_EQ(Create2DRealMatrix(e, e.ws.G, N, N), 1);
  ASSERT_EQ(Create2DRealMatrix(e, e.ws.soil_K, M, M), 1);
  ASSERT_EQ(Create2DRealMatrix(e, e.ws.pair_K, M, M), 1);
  ASSERT_EQ(YamashitaVerticalStiffnessAverageAllPiles(e), 1);
}

// Every pile in order, with the pile handled before as the reference for reuse.
inline void AssembleAll(Engine& e) {
  for (int p = 1; p <= e.foundation.NumberOfPiles; ++p) {
    AssembleSoilFlexibility(e, p);
    e.project.ReferencePile = p;
  }
}

// Entry (u, v) of the block of source pile q on field pile p.
inline float Block(const Engine& e, int p, int q, int u, int v) {
  const int M = UnknownsPerPile(e);
  return e.ws.G(M * (p - 1) + u, M * (q - 1) + v);
}

// `printed` is a value given to `figures` significant figures: the computed value must
// round to it.
inline ::testing::AssertionResult ToFigures(float actual, double printed, int figures) {
  const double exponent = std::floor(std::log10(std::fabs(printed)));
  const double half_unit = 0.5 * std::pow(10.0, exponent - (figures - 1));
  if (std::fabs(static_cast<double>(actual) - printed) <= half_unit) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << actual << " does not round to " << printed << " (" << figures
                                       << " figures)";
}

// The two grounds of the worked models.
inline std::vector<LayerData> OneLayer() { return {{0.0f, 10000.0f, 0.0f, 10000.0f, 0.0f, 0.25f}}; }
inline std::vector<LayerData> TwoLayers() {
  return {{0.0f, 20000.0f, 1000.0f, 15000.0f, 500.0f, 0.3f}, {6.0f, 80000.0f, 0.0f, 60000.0f, 0.0f, 0.2f}};
}

}  // namespace quellon::soil_test
