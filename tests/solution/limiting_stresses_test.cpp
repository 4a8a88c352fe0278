#include "solution/limiting_stresses.h"

#include <gtest/gtest.h>

#include <cmath>
#include <initializer_list>
#include <utility>

#include "engine/engine.h"
#include "engine/model_tables.h"
#include "solution/solution.h"

namespace quellon {
namespace {

// Relative tolerance for hand values worked out in double precision.
void ExpectNear(float actual, double expected) { EXPECT_NEAR(actual, expected, 4e-6 * std::fabs(expected) + 1e-6); }

double TanDeg(double deg) { return std::tan(deg * 3.14159265358979 / 180.0); }

// Creates one layer for each (top, ground type).
void SetLayers(Engine& e, std::initializer_list<std::pair<float, int>> tops_and_types) {
  ASSERT_EQ(CreateLayers(e, static_cast<int>(tops_and_types.size())), 1);
  int i = 0;
  for (const auto& [top, type] : tops_and_types) {
    e.borehole.Layers(++i).DepthToTop = top;
    e.borehole.Layers(i).GroundType = type;
  }
  e.project.AutoNq = 1;
}

// Coarse soil from the surface: 10 kN/m^3, phi 30 (kp = 3), delta 20, Ks 1.5.
void OneCoarseLayer(Engine& e) {
  SetLayers(e, {{0.0f, kCoarseSoil}});
  Layer& L = e.borehole.Layers(1);
  L.WeightDensity = 10.0f;
  L.phi = 30.0f;
  L.delta = 20.0f;
  L.Ks = 1.5f;
}

// Calls the routine with sentinels, so that outputs not belonging to the flag show up.
struct Limits {
  float shaft = -7, x = -7, y = -7, base = -7;
};
Limits At(const Engine& e, float z, float D, int base_flag, SpacingRatios s = {}) {
  Limits l;
  LimitingStressesAtDepth(e, z, D, base_flag, s, l.shaft, l.x, l.y, l.base);
  return l;
}

TEST(LimitingStresses, FactorFormulas) {
  ExpectNear(BearingCapacityFactorNq(30.0f), std::pow(10.0, 1.5));
  ExpectNear(BearingCapacityFactorNq(10.0f), 1.0);
  // Fine soil: 2 at the surface, linear to 9 at three diameters, 9 below and for D <= 0.
  EXPECT_FLOAT_EQ(FineSoilLateralFactor(0.0f, 0.5f), 2.0f);
  ExpectNear(FineSoilLateralFactor(0.75f, 0.5f), 5.5);
  EXPECT_EQ(FineSoilLateralFactor(1.5f, 0.5f), 9.0f);
  ExpectNear(FineSoilLateralFactor(1.4999f, 0.5f), 2.0 + 7.0 * 1.4999 / 1.5);
  EXPECT_EQ(FineSoilLateralFactor(0.1f, 0.0f), 9.0f);
  // Rock: (z / D + 1) k5, at most 1, and 1 without a diameter.
  ExpectNear(RockLateralFactor(1.0f, 1.0f, 0.3f), 0.6);
  EXPECT_EQ(RockLateralFactor(5.0f, 1.0f, 0.3f), 1.0f);
  EXPECT_EQ(RockLateralFactor(1.0f, 0.0f, 0.3f), 1.0f);
}

TEST(LimitingStresses, LayerAtDepthAndOverburden) {
  Engine e;
  EXPECT_EQ(LayerAtDepth(e.borehole, 1.0f), 0);  // no layers: no ground
  SetLayers(e, {{0.0f, kCoarseSoil}, {2.0f, kCoarseSoil}, {5.0f, kCoarseSoil}});
  const float gammas[] = {18.0f, 20.0f, 10.0f};
  for (int i = 1; i <= 3; ++i) e.borehole.Layers(i).WeightDensity = gammas[i - 1];
  e.borehole.Overburden = 10.0f;
  EXPECT_EQ(LayerAtDepth(e.borehole, -0.5f), 0);
  EXPECT_EQ(LayerAtDepth(e.borehole, 1.99f), 1);
  EXPECT_EQ(LayerAtDepth(e.borehole, 2.0f), 2);  // a boundary belongs to the lower layer
  EXPECT_EQ(LayerAtDepth(e.borehole, 100.0f), 3);
  ExpectNear(OverburdenAtDepth(e.borehole, 1, 1.0f), 28.0);
  ExpectNear(OverburdenAtDepth(e.borehole, 2, 2.0f), 46.0);
  ExpectNear(OverburdenAtDepth(e.borehole, 3, 7.0f), 10.0 + 36.0 + 60.0 + 20.0);
}

TEST(LimitingStresses, CoarseSoilAndLayerCaps) {
  Engine e;
  OneCoarseLayer(e);
  const double sv = 40.0;  // at z = 4
  Limits l = At(e, 4.0f, 1.0f, 0);
  ExpectNear(l.shaft, sv * 1.5 * TanDeg(20.0));
  ExpectNear(l.x, 9.0 * sv);  // no horizontal load: kp^2 sv whatever S is
  ExpectNear(l.y, 9.0 * sv);
  EXPECT_EQ(l.base, -7.0f);  // not this flag's output
  ExpectNear(At(e, 4.0f, 1.0f, 1).base, std::pow(10.0, 1.5) * sv);
  EXPECT_EQ(At(e, 4.0f, 1.0f, 1).shaft, -7.0f);
  // Any AutoNq but 1 takes the manual factor.
  e.project.Nq = 25.0f;
  for (int auto_nq : {0, 2}) {
    e.project.AutoNq = auto_nq;
    ExpectNear(At(e, 4.0f, 1.0f, 1).base, 25.0 * sv);
  }
  // A load in X: the group wedge 2 S sv tan(phi) where it is below kp^2 sv; Y unloaded.
  e.actions.Fx = -50.0f;
  l = At(e, 4.0f, 1.0f, 0, SpacingRatios{2.0f, 0.0f});
  ExpectNear(l.x, 2.0 * 2.0 * sv * TanDeg(30.0));
  ExpectNear(l.y, 9.0 * sv);
  ExpectNear(At(e, 4.0f, 1.0f, 0, SpacingRatios{10000.0f, 0.0f}).x, 9.0 * sv);
  // The layer's caps act on shaft and base, never on the lateral limits; 0 or less: none.
  Layer& L = e.borehole.Layers(1);
  L.MaxSkinFriction = 15.0f;
  L.MaxBearingPressure = 500.0f;
  l = At(e, 4.0f, 1.0f, 0, SpacingRatios{10000.0f, 0.0f});
  EXPECT_EQ(l.shaft, 15.0f);
  ExpectNear(l.x, 9.0 * sv);
  EXPECT_EQ(At(e, 4.0f, 1.0f, 1).base, 500.0f);
  L.MaxSkinFriction = 0.0f;
  L.MaxBearingPressure = -1.0f;
  ExpectNear(At(e, 4.0f, 1.0f, 0).shaft, sv * 1.5 * TanDeg(20.0));
  ExpectNear(At(e, 4.0f, 1.0f, 1).base, 25.0 * sv);
}

TEST(LimitingStresses, FineSoilRockAndDirectValues) {
  Engine e;
  SetLayers(e, {{1.0f, kFineSoil}, {10.0f, kRock}, {20.0f, kDirectValues}});
  Layer &fine = e.borehole.Layers(1), &rock = e.borehole.Layers(2), &direct = e.borehole.Layers(3);
  fine.cu = 20.0f;
  fine.dcu = 5.0f;
  fine.alpha = 0.5f;
  rock.qu = 100.0f;
  rock.k1 = 0.6f;
  direct.k5 = 0.01f;
  direct.DirectSkinFriction = 80.0f;
  direct.DirectEndBearing = 3000.0f;
  direct.HasDirectLateral = 1;
  direct.DirectLateral = 500.0f;
  // Above the first layer there is no ground: 0, not the values of a neighbour.
  Limits l = At(e, 0.5f, 0.5f, 0);
  EXPECT_EQ(l.shaft, 0.0f);
  EXPECT_EQ(l.x, 0.0f);
  EXPECT_EQ(At(e, 0.5f, 0.5f, 1).base, 0.0f);
  // Fine soil at z = 1.2, D = 0.5: cu = 21, factor 2 + 7 * 1.2 / 1.5 = 7.6.
  l = At(e, 1.2f, 0.5f, 0);
  ExpectNear(l.shaft, 10.5);
  ExpectNear(l.x, 7.6 * 21.0);
  ExpectNear(At(e, 1.2f, 0.5f, 1).base, 9.0 * 21.0);
  ExpectNear(At(e, 1.5f, 0.5f, 0).y, 9.0 * 22.5);  // z = 3D
  e.actions.Fy = 10.0f;
  ExpectNear(At(e, 1.2f, 0.5f, 0, SpacingRatios{0.0f, 1.0f}).y, 2.0 * 21.0);

  for (float k2 : {0.3f, 0.9f}) {
    rock.k2 = k2;
    ExpectNear(At(e, 11.0f, 1.0f, 0).shaft, 60.0);  // qu = 100 kPa: 100 k1 whatever k2
  }
  rock.qu = 400.0f;
  rock.k2 = rock.k4 = 0.5f;
  rock.k3 = 2.0f;
  rock.k5 = 0.05f;  // at z = 11, D = 1: (11 + 1) * 0.05 = 0.6
  l = At(e, 11.0f, 1.0f, 0);
  ExpectNear(l.shaft, 120.0);
  ExpectNear(l.x, 0.6 * 400.0);
  ExpectNear(l.y, 0.6 * 400.0);
  ExpectNear(At(e, 11.0f, 1.0f, 1).base, 400.0);

  l = At(e, 29.0f, 1.0f, 0);
  EXPECT_EQ(l.shaft, 80.0f);
  EXPECT_EQ(l.x, 500.0f);
  EXPECT_EQ(At(e, 29.0f, 1.0f, 1).base, 3000.0f);
  direct.HasDirectLateral = 0;  // end bearing times the rock factor, 0.3
  ExpectNear(At(e, 29.0f, 1.0f, 0).y, 0.3 * 3000.0);
}

TEST(LimitingStresses, SpacingRatiosFollowTheLoadDirection) {
  Engine e;
  ASSERT_EQ(CreatePiles(e, 3), 1);
  const float x[] = {0.0f, 3.0f, 2.0f}, y[] = {0.0f, 0.0f, 2.0f}, D[] = {1.0f, 1.0f, 0.5f};
  for (int p = 1; p <= 3; ++p) {
    e.foundation.Piles(p).SoilEntryX = x[p - 1];
    e.foundation.Piles(p).SoilEntryY = y[p - 1];
    e.foundation.Piles(p).ShaftDiameter = D[p - 1];
  }
  RealVector ax, ay;
  ASSERT_EQ(Create1DRealMatrix(e, ax, 3), 1);
  ASSERT_EQ(Create1DRealMatrix(e, ay, 3), 1);
  auto S = [&](int p) { return GroupSpacingRatios(e, p, ax, ay); };
  struct Case {
    float Fx, Fy;
    float Sx[3], Sy[3];
  };
  // Pile 1 behind pile 2 (9 / 3) and pile 3 (8 / 2) in +X; pile 3 (D = 0.5) divides by
  // its own diameter; a pile with nothing ahead keeps Ds * 10000. Reversing the load
  // reverses who stands ahead; an unloaded direction has ratio 0.
  const Case cases[] = {
      {100.0f, 0.0f, {3.0f, 10000.0f, 10.0f}, {0.0f, 0.0f, 0.0f}},
      {-100.0f, 0.0f, {10000.0f, 3.0f, 8.0f}, {0.0f, 0.0f, 0.0f}},
      {0.0f, 100.0f, {0.0f, 0.0f, 0.0f}, {4.0f, 2.5f, 5000.0f}},
      {0.0f, -100.0f, {0.0f, 0.0f, 0.0f}, {10000.0f, 10000.0f, 5.0f}},
  };
  for (const Case& c : cases) {
    e.actions.Fx = c.Fx;
    e.actions.Fy = c.Fy;
    for (int p = 1; p <= 3; ++p) {
      SCOPED_TRACE(testing::Message() << "Fx " << c.Fx << " Fy " << c.Fy << " pile " << p);
      EXPECT_FLOAT_EQ(S(p).Sx, c.Sx[p - 1]);
      EXPECT_FLOAT_EQ(S(p).Sy, c.Sy[p - 1]);
    }
  }
}

TEST(LimitingStresses, AllPilesDepthsRowsAndProjectCaps) {
  Engine e;
  OneCoarseLayer(e);
  e.borehole.Layers(1).delta = 45.0f;
  e.borehole.Layers(1).Ks = 1.0f;  // shaft = sv, near enough to 10 z
  e.project.NonLinear = 1;
  e.actions.NumberOfIncrements = 2;
  e.foundation.NumberOfElements = 4;
  ASSERT_EQ(CreatePiles(e, 2), 1);
  for (int p = 1; p <= 2; ++p) {
    Pile& pile = e.foundation.Piles(p);
    pile.Length = 8.0f;
    pile.ShaftDiameter = 1.0f;
    pile.SoilEntryX = 3.0f * static_cast<float>(p - 1);
    pile.SoilEntryZ = static_cast<float>(p - 1);  // pile 2 enters the ground at 1 m
  }
  e.foundation.Piles(2).RakeX = 60.0f;  // vertical depth 4 m
  ASSERT_EQ(CreateWorkspace(e), 1);
  const Workspace& w = e.ws;
  const double Nq = std::pow(10.0, 1.5), wedge = 6.0 * TanDeg(30.0);

  // A linear run leaves the tables at zero.
  e.project.NonLinear = 0;
  LimitingStressesAllPiles(e);
  EXPECT_EQ(w.LimitAxial(1), 0.0f);
  e.project.NonLinear = 1;

  e.actions.Fx = 100.0f;  // pile 1 stands behind pile 2, 3 m ahead
  e.project.LimitingShaftFriction = 60.0f;
  e.project.LimitingBearingPressure = 2000.0f;
  LimitingStressesAllPiles(e);
  // Element centres step from pile 1's entry level for both piles; each base lies at its
  // own pile's entry level plus the vertical depth.
  const double z1[] = {1.0, 3.0, 5.0, 7.0}, z2[] = {0.5, 1.5, 2.5, 3.5};
  for (int k = 1; k <= 4; ++k) {
    SCOPED_TRACE(k);
    const double shaft1 = std::min(10.0 * z1[k - 1], 60.0);
    ExpectNear(w.LimitAxial(k), shaft1);
    ExpectNear(w.LimitTorsion(k), shaft1);  // follows the capped shaft value
    ExpectNear(w.LimitX(k), wedge * 10.0 * z1[k - 1]);
    ExpectNear(w.LimitY(k), 90.0 * z1[k - 1]);
    ExpectNear(w.LimitAxial(5 + k), 10.0 * z2[k - 1]);
    ExpectNear(w.LimitTorsion(4 + k), 10.0 * z2[k - 1]);
    ExpectNear(w.LimitX(4 + k), 90.0 * z2[k - 1]);  // leading pile: single-pile value
  }
  EXPECT_EQ(w.LimitAxial(5), 2000.0f);  // Nq * 80 capped
  ExpectNear(w.LimitAxial(10), Nq * 50.0);

  // The load reversed: now pile 2 stands behind pile 1.
  e.actions.Fx = -100.0f;
  LimitingStressesAllPiles(e);
  ExpectNear(w.LimitX(1), 90.0 * 1.0);
  ExpectNear(w.LimitX(5), wedge * 5.0);
}

}  // namespace
}  // namespace quellon
