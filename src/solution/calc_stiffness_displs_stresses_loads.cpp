// The results of one increment from the six unit responses: the group stiffness and its
// reports, the cap movement under the increment's loads, and that movement spread back
// over every pile head and element as stresses, soil movements and loads. Everything
// here is an increment; Update adds it to the totals.
#include <cmath>
#include <cstddef>

#include "engine/engine.h"
#include "engine/notify.h"
#include "engine/utilities.h"
#include "files/reports.h"
#include "solution/group_stiffness.h"
#include "solution/solution.h"

namespace quellon {

namespace {

// A 6 by 6 report table in external axes, row-major t[a][b]: the internal matrix k
// (column-major) reordered, scaled, and with magnitudes below 0.001 shown as 0. The
// matrix itself keeps its full values.
void ScaledTable(const float k[36], float scale, bool divide, float t[6][6]) {
  for (int a = 1; a <= 6; ++a) {
    for (int b = 1; b <= 6; ++b) {
      const float x = k[(ConvertAxis(a) - 1) + 6 * (ConvertAxis(b) - 1)];
      const float s = divide ? x / scale : x * scale;
      t[a - 1][b - 1] = std::fabs(s) < 0.001f ? 0.0f : s;
    }
  }
}

// Element stresses: each is the sum of the six unit responses weighted by the movement.
void CombineUnitStresses(const RealMatrix& unit, const RealVector& d, int rows, RealVector& out) {
  for (int r = 1; r <= rows; ++r) out(r) = 0.0f;
  for (int c = 1; c <= 6; ++c) {
    const float dc = d(c);
    const float* u = unit.col(c);
    float* o = out.data();
    for (int r = 0; r < rows; ++r) o[r] = o[r] + u[r] * dc;
  }
}

}  // namespace

int CalcStiffnessDisplsStressesLoads(Engine& e, int increment) {
  Workspace& w = e.ws;
  const Foundation& f = e.foundation;
  const int P = f.NumberOfPiles;
  const int n = f.NumberOfElements;
  const int M = UnknownsPerPile(e);
  const int N = NumberOfUnknowns(e);

  // The stresses packed in the order of the unknowns, for the soil movement of step 10.
  RealVector t;
  if (!Create1DRealMatrix(e, t, N)) return 0;

  // 1 to 3. Stiffness, in internal and in external axes, to the host.
  float k[36];
  AssembleGroupStiffness(e, k);
  float grmat[36];
  GroupStiffnessExternal(k, grmat);
  NotifyStiffnesses(e, increment, grmat);

  // 4. Stiffness coefficients in GN and GN m; the writers decide whether they print.
  float table[6][6];
  ScaledTable(k, 1e6f, true, table);
  WriteTXTGroupStiffness(e, table);
  WriteXMLGroupStiffness(e, table);

  // 5 and 6. Flexibility, and its coefficients in units of 1e-6.
  if (!InvertMatrix(e, k, 6, 6)) return 0;
  ScaledTable(k, 1e6f, false, table);
  WriteTXTGroupFlexibility(e, table);
  WriteXMLGroupFlexibility(e, table);

  // 7. Cap movement under the loads of one increment.
  for (int i = 1; i <= 6; ++i) {
    float s = 0.0f;
    for (int j = 1; j <= 6; ++j) s = s + k[(i - 1) + 6 * (j - 1)] * w.CapLoadInc(j);
    w.CapDispInc(i) = s;
  }

  // 8. Element stresses; rows beyond nP of the last three come out zero.
  const int rows = (n + 1) * P;
  CombineUnitStresses(w.UnitStressAxial, w.CapDispInc, rows, w.StressAxialInc);
  CombineUnitStresses(w.UnitStressX, w.CapDispInc, rows, w.StressXInc);
  CombineUnitStresses(w.UnitStressY, w.CapDispInc, rows, w.StressYInc);
  CombineUnitStresses(w.UnitStressTorsion, w.CapDispInc, rows, w.StressTorsionInc);

  // 9. Movement of each pile head, first in the cap's axes, then in the pile's own.
  const float d1 = w.CapDispInc(1), d2 = w.CapDispInc(2), d3 = w.CapDispInc(3);
  const float d4 = w.CapDispInc(4), d5 = w.CapDispInc(5), d6 = w.CapDispInc(6);
  const float s3 = std::sin(d3), s5 = std::sin(d5);
  // d^2 - sin(d)^2 cannot be negative in exact arithmetic; rounding must not make it so.
  const float r3 = std::sqrt(std::fmax(d3 * d3 - s3 * s3, 0.0f));
  const float r5 = std::sqrt(std::fmax(d5 * d5 - s5 * s5, 0.0f));
  for (int p = 1; p <= P; ++p) {
    const Pile& pile = f.Piles(p);
    const float a = DegreesToRadians(pile.RakeX);
    const float ey = DegreesToRadians(pile.RakeY);
    const float ca = std::cos(a), sa = std::sin(a), ce = std::cos(ey), se = std::sin(ey);
    const float dx = pile.X - f.CentreOfRotationX;
    const float dy = pile.Y - f.CentreOfRotationY;
    const float wV = d1 + s3 * dx + s5 * dy;
    const float wX = d2 - r3 * dx;
    const float wY = d4 - r5 * dy;
    w.HeadTwistInc(p) = d6;
    w.HeadDispAxialInc(p) = ca * ce * wV - sa * wX - se * wY;
    w.HeadDispXInc(p) = sa * wV + ca * wX;
    w.HeadDispYInc(p) = se * wV + ce * wY;
  }

  // 10. Soil movement at every unknown: G times the stresses packed in the order of the
  // unknowns. Column by column, so that G is read in its storage order; each row still
  // sums its terms in rising column order.
  for (int p = 1; p <= P; ++p) {
    const int m = (p - 1) * M;
    for (int kk = 1; kk <= n + 1; ++kk) t(m + kk) = w.StressAxialInc((p - 1) * (n + 1) + kk);
    for (int kk = 1; kk <= n; ++kk) {
      const int q = (p - 1) * n + kk;
      t(m + n + 1 + kk) = w.StressXInc(q);
      t(m + 2 * n + 1 + kk) = w.StressYInc(q);
      t(m + 3 * n + 1 + kk) = w.StressTorsionInc(q);
    }
  }
  {
    float* out = w.SoilDispInc.data();
    for (int i = 0; i < N; ++i) out[i] = 0.0f;
    for (int j = 1; j <= N; ++j) {
      const float tj = t(j);
      const float* g = w.G.col(j);
      for (int i = 0; i < N; ++i) out[i] = out[i] + g[i] * tj;
    }
  }
  Release1DRealMatrix(t);

  // 11. Loads at the top of each element, summed from the toe up.
  for (int p = 1; p <= P; ++p) {
    const Pile& pile = f.Piles(p);
    const float Ds = pile.ShaftDiameter;
    const float Db = pile.BaseDiameter;
    const float h = pile.Length / static_cast<float>(n);
    const float Ab = kPi * (Db * Db) / 4.0f;
    const int base = p * (n + 1);
    w.LoadAxialInc(base) = Ab * w.StressAxialInc(base);
    // One row below the pile's last element: the next pile's first, which its own turn
    // overwrites.
    const int below = n * p + 1;
    w.ShearXInc(below) = 0.0f;
    w.MomentXZInc(below) = 0.0f;
    w.ShearYInc(below) = 0.0f;
    w.MomentYZInc(below) = 0.0f;
    w.TorqueInc(below) = 0.0f;
    for (int kk = n; kk >= 1; --kk) {
      const int r = (p - 1) * (n + 1) + kk;
      const int q = (p - 1) * n + kk;
      w.LoadAxialInc(r) = w.StressAxialInc(r) * h * 3.1415927f * Ds + w.LoadAxialInc(r + 1);
      const float sx = w.StressXInc(q);
      w.MomentXZInc(q) = (-(sx * h * 0.5f * Ds) - w.ShearXInc(q + 1)) * h + w.MomentXZInc(q + 1);
      w.ShearXInc(q) = sx * h * Ds + w.ShearXInc(q + 1);
      const float sy = w.StressYInc(q);
      w.MomentYZInc(q) = (-(sy * h * 0.5f * Ds) - w.ShearYInc(q + 1)) * h + w.MomentYZInc(q + 1);
      w.ShearYInc(q) = sy * h * Ds + w.ShearYInc(q + 1);
      w.TorqueInc(q) = w.StressTorsionInc(q) * Ds * h * 1.5707964f * Ds + w.TorqueInc(q + 1);
    }
  }
  return 1;
}

}  // namespace quellon
