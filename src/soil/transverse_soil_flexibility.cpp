// Transverse blocks of a pile's own soil matrix: horizontal displacement of each shaft
// element from a horizontal traction on each shaft element, in X and in Y.
//
// Each block treats the pile as lying in its own vertical plane, raked by the rake of
// that direction alone: element i sits at u_i = (i - 0.5) du across and
// z_i = z0 + (i - 0.5) dz down, the other horizontal coordinate being 0. The traction acts
// on the projected area h Ds of an element. The horizontal moduli are always averaged
// between the two depths, whatever treatment the vertical modulus follows.
#include <vector>

#include "engine/utilities.h"
#include "soil/soil_matrices.h"

namespace quellon {

namespace {

// One block, written at rows and columns offset + i, offset + j for each offset given, of
// a pile of element length h raked by `rake` in the block's plane. The load and the
// displacement act along `normal`, across the pile: its rake turned by a right angle.
void TransverseBlock(const SoilGround& g, const Pile& pile, float h, Trig rake, Trig normal, int offset1,
                     int offset2, RealMatrix& soil_K) {
  const int n = g.n;
  if (n < 1) return;
  const float Ds = pile.ShaftDiameter;
  const float Wt = h * Ds;
  const float dz = rake.c * h;
  const float du = -rake.s * h;
  const Trig t = normal;

  std::vector<Point3> point(static_cast<std::size_t>(n));
  std::vector<float> nu(static_cast<std::size_t>(n)), Eh(static_cast<std::size_t>(n));
  for (int i = 1; i <= n; ++i) {
    const float k = CentreSteps(i);
    const std::size_t x = static_cast<std::size_t>(i - 1);
    point[x] = {k * du, 0.0f, g.z0 + k * dz};
    nu[x] = PoissonRatioAt(*g.borehole, point[x].z);
    Eh[x] = HorizontalModulusAt(*g.borehole, point[x].z);
  }

  const float half_length = h * 0.5f;
  const float radius = Ds * 0.5f;
  for (int j = 1; j <= n; ++j) {
    const std::size_t sj = static_cast<std::size_t>(j - 1);
    for (int i = 1; i <= n; ++i) {
      const std::size_t si = static_cast<std::size_t>(i - 1);
      const float v = (nu[si] + nu[sj]) * 0.5f;
      const float Ah = MindlinCoefficient(v) / ((Eh[si] + Eh[sj]) * 0.5f);
      float value;
      if (i != j) {
        value = MindlinTransverse(Ah, v, point[si], point[sj], Wt, t);
      } else {
        // The direct term b/R1 of an element on itself is integrated over its projected
        // area; the image terms stay a point evaluation.
        value = TransverseSelfIntegral(half_length, radius, v, Ah) +
                MindlinTransverseImage(Ah, v, point[si], point[si], Wt, t);
      }
      soil_K(offset1 + i, offset1 + j) = value;
      if (offset2 > 0) soil_K(offset2 + i, offset2 + j) = value;
    }
  }
}

}  // namespace

void BuildTransverseSoilFlexibilityMatrices(const SoilGround& g, const Pile& pile, const PileFrame& frame,
                                            RealMatrix& soil_K) {
  soil_K.fill(0.0f);
  // Without rake the X and Y blocks are the same block. A rake within the zero test
  // counts as none: the pile is laid out exactly upright.
  const Trig upright{0.0f, 1.0f};
  TransverseBlock(g, pile, frame.h, upright, TrigOf(kHalfPi), g.n + 1, 2 * g.n + 1, soil_K);
}

void BuildTransverseXSoilFlexibilityMatrix(const SoilGround& g, const Pile& pile, const PileFrame& frame,
                                           RealMatrix& soil_K) {
  soil_K.fill(0.0f);
  TransverseBlock(g, pile, frame.h, frame.RakeX(), frame.normal_x, g.n + 1, 0, soil_K);
}

void BuildTransverseYSoilFlexibilityMatrix(const SoilGround& g, const Pile& pile, const PileFrame& frame,
                                           RealMatrix& soil_K) {
  TransverseBlock(g, pile, frame.h, frame.RakeY(), frame.normal_y, 2 * g.n + 1, 0, soil_K);
}

}  // namespace quellon
