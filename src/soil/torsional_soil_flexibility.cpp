// Torsion block of a pile's own soil matrix: rotation of each shaft element about the
// pile's axis from a unit shear traction running round each shaft element.
//
// There is no closed form. Each source element is cut into 20 slices along the pile and
// each slice into 80 points round its circumference; the kernels are summed over the
// 1600 points by the mid-point rule. The field point lies on the shaft surface at the +X
// side of the element's mid-height, which falls on a boundary between two slices, so no
// source point meets it and the self term needs no special treatment.
#include <array>
#include <vector>

#include "engine/utilities.h"
#include "soil/soil_matrices.h"

namespace quellon {

namespace {

constexpr int kSlices = 20;
constexpr int kRingPoints = 80;  // a multiple of 4

}  // namespace

void BuildTorsionalSoilFlexibilityMatrix(const SoilGround& g, const Pile& pile, const PileFrame& frame, int p,
                                         RealMatrix& soil_K) {
  const int n = g.n;
  if (n < 1) return;
  const bool poulos = g.poulos();
  const Trig a = frame.RakeX();
  const Trig e = frame.RakeY();
  const float h = frame.h;
  const float r = pile.ShaftDiameter * 0.5f;
  const float hs = h / 20.0f;
  const float dzs = a.c * e.c * hs;
  const float dxs = -a.s * hs;
  const float dys = -e.s * hs;
  const float Wq = dzs * 0.07854f * r;  // slice height times arc of one point
  const float inv_r = 1.0f / r;         // displacement at the surface to rotation
  const float ring_x = a.c * r;         // the ring of a raked pile, seen in plan
  const float ring_y = e.c * r;

  // The angles of the ring points, reached by steps of 0.07854 from -0.03927, are the same
  // for every slice.
  alignas(16) std::array<float, kRingPoints> ring_c, ring_s;
  float T = -0.03927f;
  for (int k = 0; k < kRingPoints; ++k) {
    T = T + 0.07854f;
    ring_c[static_cast<std::size_t>(k)] = std::cos(T);
    ring_s[static_cast<std::size_t>(k)] = std::sin(T);
  }

  std::vector<Point3> field(static_cast<std::size_t>(n));
  std::vector<LocalSoil> field_soil(static_cast<std::size_t>(n));
  for (int i = 1; i <= n; ++i) {
    const float k = CentreSteps(i);
    const Point3 F{r - k * a.s * h, -k * e.s * h, g.z0 + k * a.c * e.c * h};
    field[static_cast<std::size_t>(i - 1)] = F;
    field_soil[static_cast<std::size_t>(i - 1)] = SoilAtPoint(g, F.z, p, i);
  }

  // Every entry is one thread's sum in a fixed order, so the block does not depend on the
  // number of threads. A small block is not worth waking the other threads for.
  const bool worth_sharing = n * n * kSlices * kRingPoints >= kParallelKernelCalls;
#pragma omp parallel for schedule(dynamic) if (worth_sharing)
  for (int j = 1; j <= n; ++j) {
    for (int i = 1; i <= n; ++i) {
      const Point3& F = field[static_cast<std::size_t>(i - 1)];
      const LocalSoil& fs = field_soil[static_cast<std::size_t>(i - 1)];
      float sum = 0.0f;
      for (int s = 1; s <= kSlices; ++s) {
        const float m = static_cast<float>(kSlices * (j - 1) + s) - 0.5f;
        const float xm = m * dxs;
        const float ym = m * dys;
        const float zm = g.z0 + m * dzs;
        // The ground is the same for all points of a slice. The points are evaluated four
        // at a time and their contributions then summed one by one, in order.
        const SoilValues v = CombineSoil(fs, SoilAtPoint(g, zm, p, j), poulos);
        const Float4 nu = Splat(v.nu), A = Splat(v.Av);
        const Float4 Fx = Splat(F.x), Fy = Splat(F.y), Fz = Splat(F.z), Qz = Splat(zm);
        alignas(16) std::array<float, kRingPoints> part;
        for (int k = 0; k < kRingPoints; k += 4) {
          const Float4 c = Load4(&ring_c[static_cast<std::size_t>(k)]);
          const Float4 sn = Load4(&ring_s[static_cast<std::size_t>(k)]);
          const Float4 Qx = c * ring_x + xm;
          const Float4 Qy = sn * ring_y + ym;
          const mindlin_detail::TermsOf<Float4> terms = mindlin_detail::AllTerms(nu, Fx, Fy, Fz, Qx, Qy, Qz);
          Store4(&part[static_cast<std::size_t>(k)],
                 (MindlinTorsionX(A, Wq * sn, terms, a) + MindlinTorsionY(A, Wq * c, terms, e)) * inv_r);
        }
        for (const float x : part) sum += x;
      }
      soil_K(3 * n + 1 + i, 3 * n + 1 + j) = sum;
    }
  }
}

}  // namespace quellon
