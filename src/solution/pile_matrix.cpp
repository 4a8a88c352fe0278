// The pile matrix pile_D and its place in the group matrix D.
//
// Each pile is a column (axial), two cantilevers (bending in X and in Y) and a torsion
// bar, all built in at the rigid cap. Distances run along the pile from the cap: the
// free-standing part of length Fs first, then the n embedded elements of length h. The
// first index of pile_D is the element that moves, the second the element loaded.
#include "solution/pile_matrix.h"

#include <cmath>

#include "engine/engine.h"
#include "engine/internal_error.h"
#include "engine/utilities.h"
#include "files/reports.h"
#include "solution/solution.h"

namespace quellon {

void BuildPileMatrix(Engine& e, int p) {
  Workspace& w = e.ws;
  RealMatrix& D = w.pile_D;
  D.fill(0.0f);

  const Pile& pile = e.foundation.Piles(p);
  const GroupLayout g = LayoutOf(e);
  const int n = g.n;
  const float nf = static_cast<float>(n);
  const float L = pile.Length;
  const float Ds = pile.ShaftDiameter;
  const float Db = pile.BaseDiameter;
  const PileFrame& fr = e.foundation.Frame(p);
  const float h = fr.h;
  const float Fs = fr.free_length;
  const float As = kPi * Ds * L / nf;  // shaft area of one element
  const float Ab = kPi * (Db * Db) / 4.0f;

  auto EA = [&](int k) { return w.SectionEA(k, p); };
  auto EIx = [&](int k) { return w.SectionEIx(k, p); };
  auto EIy = [&](int k) { return w.SectionEIy(k, p); };
  auto GJ = [&](int k) { return w.SectionGJ(k, p); };
  // Distance from the cap to the centre of element i.
  auto s = [&](int i) { return Fs + CentreSteps(i) * h; };

  // Axial: a unit shear on element j is a force As at its centre; the column shortens
  // between the cap and the nearer of the two centres. On the element itself the force
  // is spread over its length, which takes h/8 off the lever.
  for (int j = 1; j <= n; ++j) {
    for (int i = 1; i <= n; ++i) {
      const float EAm = (EA(i) + EA(j)) / 2.0f;
      const int lo = i < j ? i : j;
      D(i, j) = i == j ? (s(i) - h / 8.0f) * As / EAm : s(lo) * As / EAm;
    }
  }

  // Base row and column. The shaft above an under-reamed base sees the base pressure
  // through the mean of the two diameters, not through the full base area.
  const float EAb = EA(n + 1);
  D(n + 1, n + 1) = (L + Fs) * Ab / EAb;
  const float Dm = (Db + Ds) / 2.0f;
  for (int k = 1; k <= n; ++k) {
    const float EAm = (EAb + EA(k)) / 2.0f;
    D(n + 1, k) = As * s(k) / EAm;
    D(k, n + 1) = Db > Ds ? s(k) * kPi * (Dm * Dm) / (4.0f * EAm) : Ab * s(k) / EAm;
  }

  // Bending: deflection at the centre c of element i of a cantilever built in at the
  // cap, under a load of Ds per unit length over element j, from its top t to its
  // bottom b. Bending in X works against the stiffness about Y, and the reverse.
  for (int j = 1; j <= n; ++j) {
    const float t = Fs + static_cast<float>(j - 1) * h;
    const float b = Fs + static_cast<float>(j) * h;
    const float b2 = b * b, t2 = t * t;
    const float b3 = b2 * b, t3 = t2 * t;
    const float b4 = b2 * b2, t4 = t2 * t2;
    for (int i = 1; i <= n; ++i) {
      const float c = s(i);
      const float EIxm = (EIy(i) + EIy(j)) / 2.0f;  // bending in the X direction
      const float EIym = (EIx(i) + EIx(j)) / 2.0f;  // bending in the Y direction
      float ux, uy;
      if (i < j) {
        // The load lies beyond the point: the point sits on the curved part.
        const float shape = ((b2 - t2) * 1.5f - h * c) * (c * c) * Ds;
        ux = shape / (6.0f * EIxm);
        uy = shape / (6.0f * EIym);
      } else if (i > j) {
        // The load lies between the cap and the point: the point sits on the straight
        // part beyond the load.
        const float shape = ((b3 - t3) * c - (b4 - t4) / 4.0f) * Ds;
        ux = shape / (6.0f * EIxm);
        uy = shape / (6.0f * EIym);
      } else {
        ux = CantileverSelfDeflection(c, h, Ds, EIxm);
        uy = CantileverSelfDeflection(c, h, Ds, EIym);
      }
      D(g.XInPile(i), g.XInPile(j)) = ux;
      D(g.YInPile(i), g.YInPile(j)) = uy;
    }
  }

  // Torsion: a unit shear stress round element j is a torque As Ds / 2; the bar twists
  // between the cap and the nearer centre, with h/8 off on the element itself.
  const float T = As * Ds / 2.0f;
  for (int j = 1; j <= n; ++j) {
    for (int i = 1; i <= n; ++i) {
      const float GJm = (GJ(i) + GJ(j)) / 2.0f;
      const int lo = i < j ? i : j;
      D(g.TorsionInPile(i), g.TorsionInPile(j)) = i == j ? (s(i) - h / 8.0f) * T / GJm : s(lo) * T / GJm;
    }
  }
}

namespace {

// Whether piles a and b have the same section, element by element and at the toe: the
// tables hold, for each element, the section that its centre lies in, so they tell the
// reinforced length and both sections apart wherever the difference reaches the matrix.
bool SameSectionTables(const Workspace& w, int n, int a, int b) {
  for (int k = 1; k <= n + 1; ++k) {
    if (!Same(w.SectionEA(k, a), w.SectionEA(k, b)) || !Same(w.SectionEIx(k, a), w.SectionEIx(k, b)) ||
        !Same(w.SectionEIy(k, a), w.SectionEIy(k, b)) || !Same(w.SectionGJ(k, a), w.SectionGJ(k, b)))
      return false;
  }
  return true;
}

}  // namespace

bool PilesStructurallyAlike(const Pile& a, const Pile& b) {
  return Same(a.Length, b.Length) && Same(a.ShaftDiameter, b.ShaftDiameter) &&
         Same(a.InternalDiameter, b.InternalDiameter) && Same(a.BaseDiameter, b.BaseDiameter) &&
         Same(a.RakeX, b.RakeX) && Same(a.RakeY, b.RakeY) && Same(a.EA, b.EA) && Same(a.EIx, b.EIx) &&
         Same(a.EIy, b.EIy) && Same(a.GJ, b.GJ) && a.ReinforcedLength > 0.0f && b.ReinforcedLength > 0.0f;
}

void AssemblePileFlexibility(Engine& e, int p) {
  Foundation& f = e.foundation;
  const GroupLayout g = LayoutOf(e);
  const int M = g.M;
  const int r0 = g.PileStart(p);
  RealMatrix& D = e.ws.D;
  const RealMatrix& pd = e.ws.pile_D;
  Require(p >= 1 && p <= f.NumberOfPiles && pd.rows() == M && pd.cols() == M && D.rows() == M && D.cols() >= r0 + M,
          "AssemblePileFlexibility: workspace of another model");
  const int ref = e.project.ReferencePile;
  // pile_D still holds the matrix of the pile handled last; a pile like it takes it over.
  bool reuse = p != 1 && ref >= 1 && ref <= f.NumberOfPiles && PilesStructurallyAlike(f.Piles(ref), f.Piles(p));
  // The method compares the reinforced section alone, so a pile that differs only in its
  // reinforced length or its unreinforced section would be given the other's matrix; the
  // corrected mechanics compare the whole section table as well.
  if (reuse && e.corrected_mechanics) reuse = SameSectionTables(e.ws, f.NumberOfElements, ref, p);
  if (!reuse) {
    BuildPileMatrix(e, p);
    if (e.project.Flag(4)) PrintPileMatrix(e, p);
  }
  e.project.ReferencePile = p;

  // The pile's diagonal block of the group's D: columns (p - 1)M + 1 to pM of the blocks
  // the workspace keeps.
  for (int c = 1; c <= M; ++c) {
    const float* src = pd.col(c);
    float* dst = D.col(r0 + c);
    for (int r = 0; r < M; ++r) dst[r] = src[r];
  }
}

}  // namespace quellon
