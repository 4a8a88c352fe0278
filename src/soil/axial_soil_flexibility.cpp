// Axial and base block of a pile's own soil matrix, and its rigid layer correction.
//
// The pile is placed in its own frame with the plan origin at its soil entry point and
// its top at the level z0 of the first pile, so the block depends on the pile's shape
// and rake only. A positive rake carries the lower end towards negative X or Y; the
// depth of a point is its distance along the pile times the product of both cosines.
#include <vector>

#include "engine/utilities.h"
#include "soil/soil_matrices.h"

namespace quellon {

namespace {

struct AxialLayout {
  int n = 0;
  Trig a, e;
  float Ws = 0.0f;         // surface of a shaft element
  float base_area = 0.0f;  // the base's own area
  float Wb = 0.0f;         // area of the base acting on the shaft
  float zb = 0.0f;         // depth of the base
  Point3 base;          // base point in plan under a raked pile
  std::vector<Point3> mid;  // [i - 1], element mid-points
};

AxialLayout LayOut(const SoilGround& g, const Pile& pile, const PileFrame& frame) {
  AxialLayout l;
  const int n = g.n;
  const float nf = static_cast<float>(n);
  const float L = pile.Length;
  l.n = n;
  l.a = frame.RakeX();
  l.e = frame.RakeY();
  const float dz = frame.vertical / nf;
  const float dxs = -l.a.s * L / nf;
  const float dys = -l.e.s * L / nf;
  l.Ws = ShaftArea(pile) / nf;
  l.base_area = BaseArea(pile);
  const float mean_diameter = (pile.ShaftDiameter + pile.BaseDiameter) * 0.5f;
  const float Wm = 0.7853982f * (mean_diameter * mean_diameter);
  // An under-reamed base loads the shaft above it over the mean of the two sections.
  l.Wb = pile.BaseDiameter > pile.ShaftDiameter ? Wm : l.base_area;
  l.zb = g.z0 + frame.vertical;
  l.base = {-l.a.s * L, -l.e.s * L, l.zb};
  // Mid-points are reached step by step from the first, in single precision.
  l.mid.resize(static_cast<std::size_t>(n));
  SteppedCentres x(dxs), y(dys), z(g.z0, dz);
  for (int i = 1; i <= n; ++i) l.mid[static_cast<std::size_t>(i - 1)] = {x(), y(), z()};
  return l;
}

}  // namespace

void BuildAxialSoilFlexibilityMatrix(const SoilGround& g, const Pile& pile, const PileFrame& frame, int p,
                                     RealMatrix& soil_K) {
  const AxialLayout l = LayOut(g, pile, frame);
  const int n = l.n;
  if (n < 1) return;
  const bool poulos = g.poulos();

  std::vector<LocalSoil> soil(static_cast<std::size_t>(n));
  for (int i = 1; i <= n; ++i) soil[static_cast<std::size_t>(i - 1)] = SoilAtPoint(g, l.mid[i - 1].z, p, i);
  const LocalSoil base_soil = SoilAtPoint(g, l.zb, p, n + 1);
  auto mid = [&l](int i) -> const Point3& { return l.mid[static_cast<std::size_t>(i - 1)]; };
  auto at = [&soil](int i) -> const LocalSoil& { return soil[static_cast<std::size_t>(i - 1)]; };

  // Shaft on shaft. The direct terms of an element on itself are integrated in closed
  // form over its surface; the bounded image terms stay a point evaluation.
  const float half_length = pile.Length / static_cast<float>(2 * n);
  const float radius = pile.ShaftDiameter * 0.5f;
  for (int j = 1; j <= n; ++j) {
    for (int i = 1; i <= n; ++i) {
      const SoilValues v = CombineSoil(at(i), at(j), poulos);
      if (i != j) {
        soil_K(i, j) = MindlinAxial(v.Av, v.nu, mid(i), mid(j), l.Ws, l.a, l.e);
      } else {
        soil_K(i, i) = AxialSelfIntegral(half_length, radius, v.nu, v.Av) +
                       MindlinAxialImage(v.Av, v.nu, mid(i), mid(i), l.Ws, l.a, l.e);
      }
    }
  }

  // Base on itself, at the plan origin: field and source coincide, so only the image
  // terms are evaluated at the point and the direct term is integrated over the disc.
  const Point3 centre{0.0f, 0.0f, l.zb};
  const SoilValues vb = BaseOnItselfSoilValues(g, l.zb, l.zb, p);
  soil_K(n + 1, n + 1) = BaseSelfIntegral(pile.BaseDiameter, vb.nu, vb.Av) +
                         MindlinAxialImage(vb.Av, vb.nu, centre, centre, l.base_area, l.a, l.e);

  for (int i = 1; i <= n; ++i) {
    // Base as source.
    const SoilValues vs = CombineSoil(at(i), base_soil, poulos);
    soil_K(i, n + 1) = MindlinAxial(vs.Av, vs.nu, mid(i), l.base, l.Wb, l.a, l.e);
    // Base as field.
    const SoilValues vf = CombineSoil(base_soil, at(i), poulos);
    soil_K(n + 1, i) = MindlinAxial(vf.Av, vf.nu, l.base, mid(i), l.Ws, l.a, l.e);
  }
}

void RigidLayerAxialCorrection(const SoilGround& g, const Pile& pile, const PileFrame& frame, int p,
                               RealMatrix& soil_K) {
  const float depth = g.borehole->DepthToRigidLayer;
  if (!IsNonZero(depth)) return;
  const AxialLayout l = LayOut(g, pile, frame);
  const int n = l.n;
  if (n < 1) return;
  const bool poulos = g.poulos();

  // The field point of every term lies on the rigid layer directly below the soil entry
  // point. The ground of a term is read at the rigid layer's level for Poisson's ratio and
  // the mean modulus, and by the element numbers of the entry for the smoothed modulus.
  const float zr = depth + g.z0;
  const Point3 F{0.0f, 0.0f, zr};
  std::vector<LocalSoil> source(static_cast<std::size_t>(n));
  std::vector<LocalSoil> field(static_cast<std::size_t>(n + 1));
  for (int k = 1; k <= n; ++k) source[static_cast<std::size_t>(k - 1)] = SoilAtPoint(g, l.mid[k - 1].z, p, k);
  for (int k = 1; k <= n + 1; ++k) field[static_cast<std::size_t>(k - 1)] = SoilAtPoint(g, zr, p, k);
  const LocalSoil base_soil = SoilAtPoint(g, l.zb, p, n + 1);
  auto mid = [&l](int i) -> const Point3& { return l.mid[static_cast<std::size_t>(i - 1)]; };

  for (int j = 1; j <= n; ++j) {
    const LocalSoil& sj = source[static_cast<std::size_t>(j - 1)];
    for (int i = 1; i <= n + 1; ++i) {  // row n + 1: the base as field
      const SoilValues v = CombineSoil(field[static_cast<std::size_t>(i - 1)], sj, poulos);
      soil_K(i, j) = soil_K(i, j) - MindlinAxial(v.Av, v.nu, F, mid(j), l.Ws, l.a, l.e);
    }
  }
  const SoilValues vb = BaseOnItselfSoilValues(g, zr, l.zb, p);
  const Point3 centre{0.0f, 0.0f, l.zb};
  soil_K(n + 1, n + 1) = soil_K(n + 1, n + 1) - MindlinAxial(vb.Av, vb.nu, F, centre, l.base_area, l.a, l.e);
  for (int i = 1; i <= n; ++i) {
    const SoilValues v = CombineSoil(field[static_cast<std::size_t>(i - 1)], base_soil, poulos);
    soil_K(i, n + 1) = soil_K(i, n + 1) - MindlinAxial(v.Av, v.nu, F, l.base, l.Wb, l.a, l.e);
  }
}

int RigidLayerMeetsPile(const SoilGround& g, const Pile& pile, const PileFrame& frame) {
  const float depth = g.borehole->DepthToRigidLayer;
  if (!IsNonZero(depth) || g.n < 1) return 0;
  const AxialLayout l = LayOut(g, pile, frame);
  const Point3 F{0.0f, 0.0f, depth + g.z0};
  auto same = [&F](const Point3& a) { return a.x == F.x && a.y == F.y && a.z == F.z; };
  for (int j = 1; j <= l.n; ++j) {
    if (same(l.mid[static_cast<std::size_t>(j - 1)])) return j;
  }
  if (same(l.base) || same(Point3{0.0f, 0.0f, l.zb})) return l.n + 1;
  return 0;
}

}  // namespace quellon
