#include <cmath>

#include "solution_test_model.h"

namespace quellon {
namespace {

TEST(PileGeometry, RakedPileEntersTheGroundAgainstItsRakeAtTheTopOfTheFirstLayer) {
  auto e = testing::MakeGroup({{2.0f, -1.0f, 10.0f, -5.0f}, {6.0f, 3.0f}}, 4);
  Pile& raked = e->foundation.Piles(1);
  raked.Z = 1.5f;
  e->borehole.Layers(1).DepthToTop = 0.5f;
  e->foundation.FreeStandingLength = 2.0f;
  e->actions = {40.0f, -20.0f, 1000.0f, 8.0f, -12.0f, 16.0f, 5.5f, 1.5f, 4};
  PrepareGroupGeometry(*e);
  // Over 2 m of free length a positive RakeX drifts to minus X, a negative RakeY to plus Y.
  EXPECT_NEAR(raked.SoilEntryX, 2.0 - 2.0 * std::tan(10.0 * M_PI / 180.0), 2e-6);
  EXPECT_NEAR(raked.SoilEntryY, -1.0 + 2.0 * std::tan(5.0 * M_PI / 180.0), 2e-6);
  EXPECT_EQ(raked.SoilEntryZ, 0.5f);  // the ground surface, whatever the head level
  // The centre of rotation is the mean of the cap positions, not of the entry points.
  EXPECT_EQ(e->foundation.CentreOfRotationX, 4.0f);
  EXPECT_EQ(e->foundation.CentreOfRotationY, 1.0f);
  // Loads 1.5 m along X and 0.5 m along Y off the centre, in four increments.
  const RealVector& inc = e->ws.CapLoadInc;
  EXPECT_FLOAT_EQ(inc(1), 250.0f);
  EXPECT_FLOAT_EQ(inc(3), (-12.0f + 1.5f * 1000.0f) / 4.0f);
  EXPECT_FLOAT_EQ(inc(5), (8.0f + 0.5f * 1000.0f) / 4.0f);
  EXPECT_FLOAT_EQ(inc(6), (16.0f + 1.5f * -20.0f - 0.5f * 40.0f) / 4.0f);

  e->foundation.FreeStandingLength = 0.0f;
  PrepareGroupGeometry(*e);
  EXPECT_EQ(raked.SoilEntryX, 2.0f);
  EXPECT_EQ(raked.SoilEntryZ, 1.5f);
}

TEST(PileGeometry, SectionChangesAtElementCentresAndTheToeNeedsTheFullLength) {
  // L = 10, n = 4: element centres at 1.25, 3.75, 6.25 and 8.75 m, toe at 10 m.
  auto e = testing::MakeGroup({{0.0f, 0.0f}}, 4);
  Pile& p = e->foundation.Piles(1);
  p.EA = 1.0f, p.EIx = 2.0f, p.EIy = 3.0f, p.GJ = 4.0f;
  p.UnreinforcedEA = 10.0f, p.UnreinforcedEIx = 20.0f, p.UnreinforcedEIy = 30.0f, p.UnreinforcedGJ = 40.0f;
  const Workspace& w = e->ws;
  auto pattern = [&](float length) {
    p.ReinforcedLength = length;
    PileStiffnessesAllPiles(*e);
    std::string s;
    for (int k = 1; k <= 5; ++k) {
      const bool r = w.SectionEA(k, 1) == 1.0f;
      EXPECT_EQ(w.SectionEIx(k, 1) + w.SectionEIy(k, 1) + w.SectionGJ(k, 1), r ? 9.0f : 90.0f);
      s += r ? 'R' : 'u';
    }
    return s;
  };
  EXPECT_EQ(pattern(3.75f), "RRuuu");  // a boundary at a centre counts as reinforced
  EXPECT_EQ(pattern(3.7499f), "Ruuuu");
  EXPECT_EQ(pattern(9.99f), "RRRRu");
  EXPECT_EQ(pattern(10.0f), "RRRRR");
  EXPECT_EQ(pattern(0.0f), "uuuuu");
}

}  // namespace
}  // namespace quellon
