#include <cmath>

#include "solution/solution.h"
#include "solution_test_model.h"

namespace quellon {
namespace {

using testing::MakeGroup;

TEST(PileGeometry, RakedPileEntersTheGroundAgainstItsRakeAtTheTopOfTheFirstLayer) {
  auto e = MakeGroup({{2.0f, -1.0f, 10.0f, -5.0f}, {6.0f, 3.0f, 0.0f, 0.0f}}, 4);
  e->foundation.Piles(1).Z = 1.5f;
  e->foundation.Piles(2).Z = -0.7f;
  e->borehole.Layers(1).DepthToTop = 0.5f;
  e->foundation.FreeStandingLength = 2.0f;
  PrepareGroupGeometry(*e);

  const Pile& raked = e->foundation.Piles(1);
  // A positive RakeX carries the lower end towards minus X, a negative RakeY towards
  // plus Y: over 2 m of free length the pile drifts by 2 tan(rake).
  EXPECT_NEAR(raked.SoilEntryX, 2.0 - 2.0 * std::tan(10.0 * M_PI / 180.0), 2e-6);
  EXPECT_NEAR(raked.SoilEntryY, -1.0 + 2.0 * std::tan(5.0 * M_PI / 180.0), 2e-6);
  EXPECT_LT(raked.SoilEntryX, raked.X);
  EXPECT_GT(raked.SoilEntryY, raked.Y);
  // Every pile enters at the ground surface, whatever level its head is given at.
  EXPECT_EQ(raked.SoilEntryZ, 0.5f);
  EXPECT_EQ(e->foundation.Piles(2).SoilEntryZ, 0.5f);
  EXPECT_EQ(e->foundation.Piles(2).SoilEntryX, 6.0f);

  // The centre of rotation is the mean of the cap positions, not of the entry points.
  EXPECT_FLOAT_EQ(e->foundation.CentreOfRotationX, 4.0f);
  EXPECT_FLOAT_EQ(e->foundation.CentreOfRotationY, 1.0f);

  // Without free length the pile enters where its head is.
  e->foundation.FreeStandingLength = 0.0f;
  PrepareGroupGeometry(*e);
  EXPECT_EQ(raked.SoilEntryX, 2.0f);
  EXPECT_EQ(raked.SoilEntryY, -1.0f);
  EXPECT_EQ(raked.SoilEntryZ, 1.5f);
}

TEST(PileGeometry, IncrementLoadIsMovedToTheCentreOfRotation) {
  auto e = MakeGroup({{0.0f, 0.0f}, {4.0f, 0.0f}, {4.0f, 2.0f}, {0.0f, 2.0f}}, 2, 4);
  Actions& a = e->actions;
  a.Fx = 40.0f;
  a.Fy = -20.0f;
  a.Fz = 1000.0f;
  a.Mx = 8.0f;
  a.My = -12.0f;
  a.Mz = 16.0f;
  // At the centre (2, 1) the moments pass unchanged.
  a.X = 2.0f;
  a.Y = 1.0f;
  PrepareGroupGeometry(*e);
  const RealVector& inc = e->ws.CapLoadInc;
  EXPECT_FLOAT_EQ(inc(1), 250.0f);
  EXPECT_FLOAT_EQ(inc(2), 10.0f);
  EXPECT_FLOAT_EQ(inc(3), -3.0f);
  EXPECT_FLOAT_EQ(inc(4), -5.0f);
  EXPECT_FLOAT_EQ(inc(5), 2.0f);
  EXPECT_FLOAT_EQ(inc(6), 4.0f);

  // 1.5 m along X and 0.5 m along Y off the centre: the vertical load tilts the cap in
  // both planes, and the horizontal loads twist it.
  a.X = 3.5f;
  a.Y = 1.5f;
  PrepareGroupGeometry(*e);
  EXPECT_FLOAT_EQ(inc(3), (-12.0f + 1.5f * 1000.0f) / 4.0f);
  EXPECT_FLOAT_EQ(inc(5), (8.0f + 0.5f * 1000.0f) / 4.0f);
  EXPECT_FLOAT_EQ(inc(6), (16.0f + 1.5f * -20.0f - 0.5f * 40.0f) / 4.0f);
}

TEST(PileGeometry, SectionChangesAtElementCentresAndTheToeNeedsTheFullLength) {
  // L = 10, n = 4: element centres at 1.25, 3.75, 6.25 and 8.75 m, toe at 10 m.
  auto e = MakeGroup({{0.0f, 0.0f}}, 4);
  Pile& p = e->foundation.Piles(1);
  p.EA = 1.0f, p.EIx = 2.0f, p.EIy = 3.0f, p.GJ = 4.0f;
  p.UnreinforcedEA = 10.0f, p.UnreinforcedEIx = 20.0f, p.UnreinforcedEIy = 30.0f, p.UnreinforcedGJ = 40.0f;
  const Workspace& w = e->ws;
  auto reinforced_rows = [&](float length) {
    p.ReinforcedLength = length;
    PileStiffnessesAllPiles(*e);
    std::string pattern;
    for (int k = 1; k <= 5; ++k) {
      const bool r = w.SectionEA(k, 1) == 1.0f;
      // All four tables follow the same rule.
      EXPECT_EQ(w.SectionEIx(k, 1), r ? 2.0f : 20.0f);
      EXPECT_EQ(w.SectionEIy(k, 1), r ? 3.0f : 30.0f);
      EXPECT_EQ(w.SectionGJ(k, 1), r ? 4.0f : 40.0f);
      pattern += r ? 'R' : 'u';
    }
    return pattern;
  };
  EXPECT_EQ(reinforced_rows(3.75f), "RRuuu");  // the boundary at a centre counts as reinforced
  EXPECT_EQ(reinforced_rows(3.7499f), "Ruuuu");
  EXPECT_EQ(reinforced_rows(9.99f), "RRRRu");  // all elements, but not the toe
  EXPECT_EQ(reinforced_rows(10.0f), "RRRRR");
  EXPECT_EQ(reinforced_rows(0.0f), "uuuuu");
}

}  // namespace
}  // namespace quellon
