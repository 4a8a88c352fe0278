// The rigid cap around the solve: the movement that each of six unit cap movements
// forces on every unknown (UBCV), and after the solve the stresses sorted by kind and
// summed into the six loads at the head of each pile.
//
// Cap movements, in the order of the columns: 1 vertical (down), 2 along X, 3 rotation
// in the XZ plane, 4 along Y, 5 rotation in the YZ plane, 6 twist. The two tilts are
// first-order rotations; the twist is a finite rotation of one radian in the method as
// defined, and a first-order one, like the tilts, in the corrected mechanics.
#include <cmath>

#include "engine/engine.h"
#include "engine/utilities.h"
#include "solution/solution.h"

namespace quellon {

void ResetYieldCounters(Engine& e) {
  e.ws.YieldCountAxial = 0;
  e.ws.YieldCountX = 0;
  e.ws.YieldCountY = 0;
  e.ws.YieldCountTorsion = 0;
}

void BuildBoundaryConditionVectors(Engine& e, int p) {
  const Foundation& f = e.foundation;
  const Pile& pile = f.Piles(p);
  const GroupLayout g = LayoutOf(e);
  const int n = g.n;
  RealMatrix& U = e.ws.UBCV;

  const PileFrame& fr = f.Frame(p);
  const float a = fr.a, ey = fr.e;
  const float ca = fr.ca, sa = fr.sa, ta = fr.ta;
  const float ce = fr.ce, se = fr.se, te = fr.te;
  const float F = f.FreeStandingLength;
  const float h = fr.h;
  const float Fs = fr.free_length;

  // Polar position of the head about the centre of rotation, and the movement of the
  // head when the cap turns by one radian about that centre.
  const float x = pile.X - f.CentreOfRotationX;
  const float y = pile.Y - f.CentreOfRotationY;
  const float R = std::sqrt(x * x + y * y);
  float v;
  if (IsZero(x)) {
    v = y > 0.0f ? 1.5708f : (y < 0.0f ? -1.5708f : 0.0f);
  } else {
    v = std::atan(y / x);
    if (x < 0.0f) v = v + kPi;
  }
  const float Dx = R * (std::cos(v + 1.0f) - std::cos(v));
  const float Dy = R * (std::sin(v + 1.0f) - std::sin(v));

  // A pile raked both ways leans along a diagonal; w is that diagonal's direction.
  float w = 0.0f;
  if (a != 0.0f && ey != 0.0f) w = (a > 0.0f) == (ey > 0.0f) ? 0.7854f : -0.7854f;
  const bool double_rake = std::fabs(a) > 0.0f && std::fabs(ey) > 0.0f;
  const float kx = std::cos(w) - std::cos(w + 1.0f);
  const float ky = std::sin(w) - std::sin(w + 1.0f);

  // The corrected mechanics turn the cap by a first-order unit twist: a point at
  // (X, Y) from the centre moves by (-Y, X). The element lies at (x - ax, y - ay) from
  // the centre (a positive rake carries the lower end towards minus X or Y), which
  // holds for a pile raked both ways as for any other.
  const bool corrected = e.corrected_mechanics;

  // Axial rows, shaft and base alike: the cap's movement resolved along the pile.
  for (int k = 1; k <= n + 1; ++k) {
    const int ra = g.AxialUnknown(p, k);
    U(ra, 1) = ca * ce;
    U(ra, 2) = -sa;
    U(ra, 3) = x * ca;
    U(ra, 4) = -se;
    U(ra, 5) = y * ce;
    U(ra, 6) = 0.0f;
  }

  for (int i = 1; i <= n; ++i) {
    const float t = CentreSteps(i);
    const float d = Fs + h * t;               // distance from the cap along the pile
    const float ax = F * ta + t * h * sa;     // offset of the element from the head, X
    const float ay = F * te + t * h * se;     // offset of the element from the head, Y

    // The twist acts on the element's offset from the head as on the head's offset
    // from the centre: 0.4597 and 0.8415 are 1 - cos 1 and sin 1.
    const int rx = g.XUnknown(p, i);
    U(rx, 1) = sa;
    U(rx, 2) = ca;
    U(rx, 3) = x * sa - d;
    U(rx, 4) = 0.0f;
    U(rx, 5) = 0.0f;
    if (corrected) {
      U(rx, 6) = ay - y;
    } else {
      U(rx, 6) = double_rake ? Dx + ax * kx : Dx + 0.4597f * ax + 0.8415f * ay;
    }

    const int ry = g.YUnknown(p, i);
    U(ry, 1) = se;
    U(ry, 2) = 0.0f;
    U(ry, 3) = 0.0f;
    U(ry, 4) = ce;
    U(ry, 5) = y * se - d;
    if (corrected) {
      U(ry, 6) = x - ax;
    } else {
      U(ry, 6) = double_rake ? Dy + ax * ky : Dy - 0.8415f * ax + 0.4597f * ay;
    }

    const int rt = g.TorsionUnknown(p, i);
    for (int c = 1; c <= 5; ++c) U(rt, c) = 0.0f;
    U(rt, 6) = 1.0f;
  }
}

void SplitTractions(Engine& e) {
  Workspace& w = e.ws;
  w.UnitStressAxial.fill(0.0f);
  w.UnitStressX.fill(0.0f);
  w.UnitStressY.fill(0.0f);
  w.UnitStressTorsion.fill(0.0f);
  const GroupLayout g = LayoutOf(e);
  for (int c = 1; c <= 6; ++c) {
    const float* t = w.Tractions.col(c);  // t[m] is Tractions(m + 1, c)
    float* ua = w.UnitStressAxial.col(c);
    float* ux = w.UnitStressX.col(c);
    float* uy = w.UnitStressY.col(c);
    float* ut = w.UnitStressTorsion.col(c);
    for (int p = 1; p <= g.P; ++p) {
      for (int k = 1; k <= g.n + 1; ++k) ua[g.AxialRow(p, k) - 1] = t[g.AxialUnknown(p, k) - 1];
      for (int k = 1; k <= g.n; ++k) {
        const int q = g.ElementRow(p, k) - 1;
        ux[q] = t[g.XUnknown(p, k) - 1];
        uy[q] = t[g.YUnknown(p, k) - 1];
        ut[q] = t[g.TorsionUnknown(p, k) - 1];
      }
    }
  }
}

void CalcHeadLoads(Engine& e, int increment) {
  Project& pr = e.project;
  // Flag 35 asks for the last increment to be reported in full.
  if (pr.Flag(35) && increment == e.actions.NumberOfIncrements) {
    for (int flag : {19, 21, 22, 25, 27, 28, 31, 36}) pr.Flags(flag) = 1;
  }

  Workspace& w = e.ws;
  const GroupLayout g = LayoutOf(e);
  const int P = g.P;
  const int n = g.n;
  const float nf = static_cast<float>(n);
  for (int c = 1; c <= 6; ++c) {
    for (int p = 1; p <= P; ++p) {
      const Pile& pile = e.foundation.Piles(p);
      const float L = pile.Length;
      const float Ds = pile.ShaftDiameter;
      const float Db = pile.BaseDiameter;
      const float h = e.foundation.Frame(p).h;
      const float As = kPi * Ds * L / nf;
      const float Ab = kPi * (Db * Db) / 4.0f;
      const float width = Ds * L / nf;  // projected area of one element

      float shear = 0.0f, sx = 0.0f, mx = 0.0f, sy = 0.0f, my = 0.0f, st = 0.0f;
      for (int k = 1; k <= n; ++k) {
        const float z = CentreSteps(k) * h;  // depth below the soil entry
        const int q = g.ElementRow(p, k);
        shear = shear + w.UnitStressAxial(g.AxialRow(p, k), c);
        sx = sx + w.UnitStressX(q, c);
        mx = mx + z * w.UnitStressX(q, c);
        sy = sy + w.UnitStressY(q, c);
        my = my + z * w.UnitStressY(q, c);
        st = st + w.UnitStressTorsion(q, c);
      }
      // Moments are about the soil entry point; the lift to the cap comes later.
      w.HeadAxial(p, c) = Ab * w.UnitStressAxial(g.AxialRow(p, n + 1), c) + As * shear;
      w.HeadX(p, c) = width * sx;
      w.HeadMomentXZ(p, c) = -width * mx;
      w.HeadY(p, c) = width * sy;
      w.HeadMomentYZ(p, c) = -width * my;
      w.HeadTorque(p, c) = As * 0.5f * Ds * st;
    }
  }
}

}  // namespace quellon
