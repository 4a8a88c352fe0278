#include "soil/mindlin_kernels.h"

#include <gtest/gtest.h>

#include "engine/utilities.h"
#include "soil_test_support.h"

namespace quellon {
namespace {

using soil_test::ToFigures;

// nu = 0.25, field (1, 2, 3), source (0, 0, 5), A = W = 1, rakes of 10 and -5 degrees.
class KernelReference : public ::testing::Test {
 protected:
  const float nu = 0.25f;
  const SoilPoint f{1.0f, 2.0f, 3.0f};
  const SoilPoint s{0.0f, 0.0f, 5.0f};
  const float a = DegreesToRadians(10.0f);
  const float e = DegreesToRadians(-5.0f);
  const float t = a + 1.5707964f;
};

TEST_F(KernelReference, SevenInfluencesMatchTheReferenceTable) {
  const Influences I = MindlinInfluences(nu, f, s);
  EXPECT_TRUE(ToFigures(I.Ixx, 0.96895, 5));
  EXPECT_TRUE(ToFigures(I.Ixz, -0.073921, 5));
  EXPECT_TRUE(ToFigures(I.Izx, -0.088185, 5));
  EXPECT_TRUE(ToFigures(I.Iyy, 1.0817, 5));
  EXPECT_TRUE(ToFigures(I.Iyz, -0.14784, 5));
  EXPECT_TRUE(ToFigures(I.Izy, -0.17637, 5));
  EXPECT_TRUE(ToFigures(I.Izz, 1.4324, 5));
}

TEST_F(KernelReference, RotatedKernelsMatchTheReferenceTable) {
  EXPECT_TRUE(ToFigures(a, 0.17453, 5));
  EXPECT_TRUE(ToFigures(e, -0.087266, 5));
  EXPECT_TRUE(ToFigures(MindlinAxial(1.0f, nu, f, s, 1.0f, a, e), 1.4157, 5));
  EXPECT_TRUE(ToFigures(MindlinAxialImage(1.0f, nu, f, s, 1.0f, a, e), 0.60441, 5));
  EXPECT_TRUE(ToFigures(MindlinTransverse(1.0f, nu, f, s, 1.0f, t), 0.95521, 5));
  EXPECT_TRUE(ToFigures(MindlinTransverseImage(1.0f, nu, f, s, 1.0f, t), 0.27349, 5));
  EXPECT_TRUE(ToFigures(MindlinTorsionX(1.0f, nu, f, s, 1.0f, a), 0.95521, 5));
  EXPECT_TRUE(ToFigures(MindlinTorsionY(1.0f, nu, f, s, 1.0f, e), 1.1125, 5));
}

TEST(SelfIntegrals, MatchTheReferenceValues) {
  EXPECT_TRUE(ToFigures(AxialSelfIntegral(1.0f, 0.5f, 0.25f, 1.0f), 21.592, 5));
  EXPECT_TRUE(ToFigures(TransverseSelfIntegral(1.0f, 0.5f, 1.0f, 0.25f), 9.6242, 5));
}

TEST(SelfIntegrals, ShortAxialElementIsProportionalToItsLength) {
  // With a << b the integral tends to 8 pi b A (2 (1 - nu) a/b - a/(2b)).
  const float a = 1e-3f, b = 0.5f, nu = 0.3f;
  const float limit = 25.132742f * b * (2.0f * (1.0f - nu) * a / b - 0.5f * a / b);
  EXPECT_NEAR(AxialSelfIntegral(a, b, nu, 1.0f), limit, 1e-3f * limit);
}

TEST(KernelForms, VerticalPileReducesToTheVerticalAndHorizontalInfluences) {
  const SoilPoint f{0.7f, -0.4f, 2.0f}, s{0.0f, 0.0f, 6.5f};
  const Influences I = MindlinInfluences(0.3f, f, s);
  EXPECT_FLOAT_EQ(MindlinAxial(1.0f, 0.3f, f, s, 1.0f, 0.0f, 0.0f), I.Izz);
  // cos(1.5707964) is not exactly 0 in single precision, hence the tolerance.
  EXPECT_NEAR(MindlinTransverse(1.0f, 0.3f, f, s, 1.0f, 1.5707964f), I.Ixx, 1e-5f * I.Ixx);
}

TEST(KernelForms, OnOneVerticalLineTheCouplingTermsVanish) {
  const SoilPoint f{2.0f, 1.0f, 3.0f}, s{2.0f, 1.0f, 7.0f};
  const Influences I = MindlinInfluences(0.3f, f, s);
  EXPECT_EQ(I.Ixz, 0.0f);
  EXPECT_EQ(I.Izx, 0.0f);
  EXPECT_EQ(I.Iyz, 0.0f);
  EXPECT_EQ(I.Izy, 0.0f);
  // The image form of the axial kernel is then the vertical image term alone, which is
  // what the image part of Izz is.
  const float image = MindlinAxialImage(1.0f, 0.3f, f, s, 1.0f, 0.0f, 0.0f);
  const float direct = (3.0f - 4.0f * 0.3f) / 4.0f + 16.0f / 64.0f;  // b/R1 + (z - c)^2/R1^3, R1 = 4
  EXPECT_NEAR(image, I.Izz - direct, 1e-6f);
}

TEST(KernelForms, IncompressibleGroundDropsTheSTerms) {
  // With nu = 0.5, k1 = 0, so loads along X at mirror positions about the source give
  // Ixz and Izx equal to dx (Kd + T) and dx (Kd - T): their sum is 2 dx Kd.
  const SoilPoint f{1.5f, 0.0f, 4.0f}, s{0.0f, 0.0f, 2.0f};
  const Influences I = MindlinInfluences(0.5f, f, s);
  const float R1 = std::sqrt(1.5f * 1.5f + 4.0f), R2 = std::sqrt(1.5f * 1.5f + 36.0f);
  const float Kd = 2.0f * (1.0f / (R2 * R2 * R2) + 1.0f / (R1 * R1 * R1));
  const float T = 6.0f * 2.0f * 4.0f * 6.0f / (R2 * R2 * R2 * R2 * R2);
  EXPECT_NEAR(I.Ixz, 1.5f * (Kd + T), 1e-6f);
  EXPECT_NEAR(I.Izx, 1.5f * (Kd - T), 1e-6f);
}

TEST(KernelForms, CouplingChangesSignWithDepthOrderAndPlanSide) {
  const SoilPoint src{0.0f, 0.0f, 5.0f};
  const Influences above = MindlinInfluences(0.3f, SoilPoint{1.0f, 0.0f, 3.0f}, src);
  const Influences below = MindlinInfluences(0.3f, SoilPoint{1.0f, 0.0f, 7.0f}, src);
  const Influences mirrored = MindlinInfluences(0.3f, SoilPoint{-1.0f, 0.0f, 3.0f}, src);
  EXPECT_LT(above.Ixz * below.Ixz, 0.0f);  // Kd follows z - c
  EXPECT_FLOAT_EQ(mirrored.Ixz, -above.Ixz);
  EXPECT_FLOAT_EQ(mirrored.Izx, -above.Izx);
  EXPECT_FLOAT_EQ(mirrored.Ixx, above.Ixx);
}

}  // namespace
}  // namespace quellon
