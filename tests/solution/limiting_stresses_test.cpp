#include "solution/limiting_stresses.h"

#include "solution_test_model.h"

namespace quellon {
namespace {

double TanDeg(double deg) { return std::tan(deg * 3.14159265358979 / 180.0); }

// Coarse soil from 0 (10 kN/m^3, phi 30 so kp = 3, delta 20, Ks 1.5), fine soil from
// 10 m (cu 20 + 5 per metre, alpha 0.5), rock from 20 m (qu 400), direct values from 30 m.
void FourGroundTypes(Engine& e) {
  ASSERT_EQ(CreateLayers(e, 4), 1);
  const int types[] = {kCoarseSoil, kFineSoil, kRock, kDirectValues};
  for (int i = 1; i <= 4; ++i) e.borehole.Layers(i).DepthToTop = 10.0f * (i - 1), e.borehole.Layers(i).GroundType = types[i - 1];
  Layer &coarse = e.borehole.Layers(1), &fine = e.borehole.Layers(2), &rock = e.borehole.Layers(3), &direct = e.borehole.Layers(4);
  e.project.AutoNq = 1;
  coarse.WeightDensity = 10.0f, coarse.phi = 30.0f, coarse.delta = 20.0f, coarse.Ks = 1.5f;
  fine.cu = 20.0f, fine.dcu = 5.0f, fine.alpha = 0.5f;
  rock.qu = 400.0f, rock.k1 = 0.6f, rock.k2 = rock.k4 = 0.5f, rock.k3 = 2.0f, rock.k5 = 0.05f;
  direct.k5 = 0.01f, direct.DirectSkinFriction = 80.0f, direct.DirectEndBearing = 3000.0f;
  direct.HasDirectLateral = 1, direct.DirectLateral = 500.0f;
}

TEST(LimitingStresses, FourGroundTypesByHandWithCapsAndGroupWedge) {
  Engine e;
  FourGroundTypes(e);
  struct Case {
    float z, D;
    double shaft, lateral, base;
  };
  // Coarse at z = 4: sv = 40, shaft sv Ks tan(delta), lateral kp^2 sv, base Nq sv with
  // Nq = 10^1.5 at phi 30. Fine at 11 (cu 25): shaft alpha cu, lateral 9 cu (deeper
  // than three diameters), base 9 cu. Rock at 21 (qu 400): shaft 120 from k1 to k4,
  // lateral (z/D + 1) k5 qu capped at qu, base qu. Direct values as given.
  const Case cases[] = {
      {4.0f, 1.0f, 40.0 * 1.5 * TanDeg(20.0), 9.0 * 40.0, std::pow(10.0, 1.5) * 40.0},
      {11.0f, 0.5f, 0.5 * 25.0, 9.0 * 25.0, 9.0 * 25.0},
      {21.0f, 1.0f, 120.0, 400.0, 400.0},
      {39.0f, 1.0f, 80.0, 500.0, 3000.0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.z);
    float shaft = -7, x = -7, y = -7, base = -7;
    LimitingStressesAtDepth(e, c.z, c.D, 0, {}, shaft, x, y, base);
    EXPECT_NEAR(shaft, c.shaft, 4e-6 * c.shaft);
    EXPECT_NEAR(x, c.lateral, 4e-6 * c.lateral);
    EXPECT_NEAR(y, c.lateral, 4e-6 * c.lateral);
    EXPECT_EQ(base, -7.0f);  // not this flag's output
    LimitingStressesAtDepth(e, c.z, c.D, 1, {}, shaft, x, y, base);
    EXPECT_NEAR(base, c.base, 4e-6 * c.base);
  }
  float shaft, x, y, base;
  // A load in X on a coarse layer: the group wedge 2 S sv tan(phi) where below kp^2 sv.
  e.actions.Fx = -50.0f;
  LimitingStressesAtDepth(e, 4.0f, 1.0f, 0, SpacingRatios{2.0f, 0.0f}, shaft, x, y, base);
  EXPECT_NEAR(x, 2.0 * 2.0 * 40.0 * TanDeg(30.0), 1e-4);
  EXPECT_NEAR(y, 360.0, 1e-3);
  // The layer's caps act on shaft and base, never on the lateral limits.
  e.borehole.Layers(1).MaxSkinFriction = 15.0f;
  e.borehole.Layers(1).MaxBearingPressure = 500.0f;
  LimitingStressesAtDepth(e, 4.0f, 1.0f, 0, SpacingRatios{10000.0f, 0.0f}, shaft, x, y, base);
  EXPECT_EQ(shaft, 15.0f);
  EXPECT_NEAR(x, 360.0, 1e-3);
  LimitingStressesAtDepth(e, 4.0f, 1.0f, 1, {}, shaft, x, y, base);
  EXPECT_EQ(base, 500.0f);
}

TEST(LimitingStresses, SpacingRatiosFollowTheLoadDirection) {
  Engine e;
  ASSERT_EQ(CreatePiles(e, 3), 1);
  const float x[] = {0.0f, 3.0f, 2.0f}, y[] = {0.0f, 0.0f, 2.0f}, D[] = {1.0f, 1.0f, 0.5f};
  for (int p = 1; p <= 3; ++p) {
    Pile& pile = e.foundation.Piles(p);
    pile.SoilEntryX = x[p - 1], pile.SoilEntryY = y[p - 1], pile.ShaftDiameter = D[p - 1];
  }
  RealVector ax, ay;
  ASSERT_EQ(Create1DRealMatrix(e, ax, 3) + Create1DRealMatrix(e, ay, 3), 2);
  // Pile 1 behind pile 2 (9 / 3) and pile 3 (8 / 2) in +X; pile 3 (D = 0.5) divides by
  // its own diameter; a pile with nothing ahead keeps Ds * 10000. Reversing the load
  // reverses who stands ahead; an unloaded direction has ratio 0. Per case Fx, Fy, then
  // the ratio in the loaded direction of piles 1 to 3.
  const float cases[][5] = {{100, 0, 3, 10000, 10}, {-100, 0, 10000, 3, 8}, {0, 100, 4, 2.5f, 5000}, {0, -100, 10000, 10000, 5}};
  for (const auto& c : cases) {
    e.actions.Fx = c[0], e.actions.Fy = c[1];
    for (int p = 1; p <= 3; ++p) {
      const SpacingRatios s = GroupSpacingRatios(e, p, ax, ay);
      EXPECT_FLOAT_EQ(c[0] != 0 ? s.Sx : s.Sy, c[1 + p]) << c[0] << " " << c[1] << " pile " << p;
      EXPECT_EQ(c[0] != 0 ? s.Sy : s.Sx, 0.0f);
    }
  }
}

}  // namespace
}  // namespace quellon
