// Mindlin's point-load kernels and the closed-form self integrals against reference values.
#include "soil/mindlin_kernels.h"

#include <gtest/gtest.h>

#include "engine/utilities.h"
#include "soil_test_support.h"

namespace quellon {
namespace {

using soil_test::ToFigures;

// nu = 0.25, field (1, 2, 3), source (0, 0, 5), A = W = 1, rakes of 10 and -5 degrees.
TEST(MindlinKernels, InfluencesAndRotatedKernelsMatchTheReferenceTable) {
  const float nu = 0.25f, a = DegreesToRadians(10.0f), e = DegreesToRadians(-5.0f), t = a + 1.5707964f;
  const Point3 f{1.0f, 2.0f, 3.0f}, s{0.0f, 0.0f, 5.0f};
  const Influences I = MindlinInfluences(nu, f, s);
  const float influence[] = {I.Ixx, I.Ixz, I.Izx, I.Iyy, I.Iyz, I.Izy, I.Izz};
  const double reference[] = {0.96895, -0.073921, -0.088185, 1.0817, -0.14784, -0.17637, 1.4324};
  for (int k = 0; k < 7; ++k) EXPECT_TRUE(ToFigures(influence[k], reference[k], 5)) << "influence " << k + 1;
  EXPECT_TRUE(ToFigures(a, 0.17453, 5));
  EXPECT_TRUE(ToFigures(e, -0.087266, 5));
  EXPECT_TRUE(ToFigures(MindlinAxial(1.0f, nu, f, s, 1.0f, a, e), 1.4157, 5));
  EXPECT_TRUE(ToFigures(MindlinAxialImage(1.0f, nu, f, s, 1.0f, a, e), 0.60441, 5));
  EXPECT_TRUE(ToFigures(MindlinTransverse(1.0f, nu, f, s, 1.0f, t), 0.95521, 5));
  EXPECT_TRUE(ToFigures(MindlinTransverseImage(1.0f, nu, f, s, 1.0f, t), 0.27349, 5));
  EXPECT_TRUE(ToFigures(MindlinTorsionX(1.0f, nu, f, s, 1.0f, a), 0.95521, 5));
  EXPECT_TRUE(ToFigures(MindlinTorsionY(1.0f, nu, f, s, 1.0f, e), 1.1125, 5));
}

TEST(MindlinKernels, SelfIntegralsMatchTheReferenceValues) {
  EXPECT_TRUE(ToFigures(AxialSelfIntegral(1.0f, 0.5f, 0.25f, 1.0f), 21.592, 5));
  EXPECT_TRUE(ToFigures(TransverseSelfIntegral(1.0f, 0.5f, 0.25f, 1.0f), 9.6242, 5));
}

}  // namespace
}  // namespace quellon
