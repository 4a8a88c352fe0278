// Soil flexibility between two piles: the influence of the elements of pile q (the
// source) on those of pile p (the field), and its rigid layer correction.
//
// Every element acts as a point load at its mid-point; two piles' elements are never
// taken to coincide (the driver refuses such a model before assembly). A load on a raked
// pile has components along every axis, so this block couples the axial, base and both
// transverse unknowns: the seven influences of Mindlin's solution are turned into the
// directions of the two piles' axes and of their transverse directions.
#include <array>
#include <cmath>

#include "engine/utilities.h"
#include "soil/soil_matrices.h"

namespace quellon {

PileAxis MakePileAxis(const SoilGround& g, const Pile& pile, const PileFrame& frame, int index, bool with_soil) {
  PileAxis axis;
  const int n = g.n;
  axis.pile = &pile;
  axis.index = index;
  axis.a = frame.RakeX();
  axis.e = frame.RakeY();
  axis.h = frame.h;
  axis.points.resize(static_cast<std::size_t>(n + 1));
  for (int i = 1; i <= n; ++i) {
    const float k = CentreSteps(i);
    AxisPoint& pt = axis.points[static_cast<std::size_t>(i - 1)];
    pt.x = k * axis.a.s * axis.h;
    pt.y = k * axis.e.s * axis.h;
    pt.z = g.z0 + k * axis.a.c * axis.e.c * axis.h;
    if (with_soil) pt.soil = SoilAtPoint(g, pt.z, index, i);
  }
  AxisPoint& base = axis.points[static_cast<std::size_t>(n)];
  base.x = axis.a.s * pile.Length;
  base.y = axis.e.s * pile.Length;
  base.z = g.z0 + frame.vertical;
  if (with_soil) base.soil = SoilAtPoint(g, base.z, index, n + 1);
  const float depth = g.borehole->DepthToRigidLayer;
  if (with_soil && IsNonZero(depth)) {
    const float zr = depth + g.z0;
    for (int k = 1; k <= n + 1; ++k) axis.points[static_cast<std::size_t>(k - 1)].rigid = SoilAtPoint(g, zr, index, k);
  }
  return axis;
}

PairSpacing SpacingOf(const Pile& p, const Pile& q) {
  PairSpacing d;
  d.Dx = p.SoilEntryX - q.SoilEntryX;
  d.Dy = p.SoilEntryY - q.SoilEntryY;
  d.s = std::sqrt(d.Dy * d.Dy + d.Dx * d.Dx);
  return d;
}

bool InteractionLimit(const InteractionRule& rule, const Pile& source, float* limit) {
  switch (rule.flag) {
    case 1: *limit = 1000.0f * source.ShaftDiameter; return true;
    case 2: *limit = 50.0f * source.ShaftDiameter; return true;
    case 3: *limit = rule.distance; return true;
    default: *limit = 0.0f; return false;
  }
}

namespace {

// Products of the sines and cosines of the two piles' rakes that turn the seven
// influences into the directions of the piles: A along a pile's axis, X and Y across it.
// The first letter is the direction at the field pile p, the second that of the load on q.
struct Directions {
  float cc, cep_seq, sep_ceq, sep_seq, cap_saq, sap_caq, sap_saq, cap_caq, cep_ceq;

  Directions(const PileAxis& p, const PileAxis& q)
      : cc(p.a.c * p.e.c * q.a.c * q.e.c),
        cep_seq(p.e.c * q.e.s),
        sep_ceq(p.e.s * q.e.c),
        sep_seq(p.e.s * q.e.s),
        cap_saq(p.a.c * q.a.s),
        sap_caq(p.a.s * q.a.c),
        sap_saq(p.a.s * q.a.s),
        cap_caq(p.a.c * q.a.c),
        cep_ceq(p.e.c * q.e.c) {}

  template <class V>
  V AA(const InfluencesOf<V>& I) const {
    return cc * I.Izz - cep_seq * I.Izy - sep_ceq * I.Iyz + sep_seq * I.Iyy - cap_saq * I.Izx -
           sap_caq * I.Ixz + sap_saq * I.Ixx;
  }
  template <class V>
  V AX(const InfluencesOf<V>& I) const {
    return cap_saq * I.Izz + cap_caq * I.Izx - sap_saq * I.Ixz - sap_caq * I.Ixx;
  }
  template <class V>
  V XA(const InfluencesOf<V>& I) const {
    return sap_caq * I.Izz - sap_saq * I.Izx + cap_caq * I.Ixz - cap_saq * I.Ixx;
  }
  template <class V>
  V XX(const InfluencesOf<V>& I) const {
    return sap_saq * I.Izz + sap_caq * I.Izx + cap_saq * I.Ixz + cap_caq * I.Ixx;
  }
  template <class V>
  V AY(const InfluencesOf<V>& I) const {
    return cep_seq * I.Izz + cep_ceq * I.Izy - sep_seq * I.Iyz - sep_ceq * I.Iyy;
  }
  template <class V>
  V YA(const InfluencesOf<V>& I) const {
    return sep_ceq * I.Izz - sep_seq * I.Izy + cep_ceq * I.Iyz - cep_seq * I.Iyy;
  }
  template <class V>
  V YY(const InfluencesOf<V>& I) const {
    return sep_seq * I.Izz + sep_ceq * I.Izy + cep_seq * I.Iyz + cep_ceq * I.Iyy;
  }
};

// Areas over which the tractions on an element of the source pile act.
struct SourceAreas {
  float Ws, Wt, base_area, Wb;

  explicit SourceAreas(const Pile& q, int n) {
    Ws = q.ShaftDiameter * kPi * q.Length / static_cast<float>(n);  // surface
    Wt = Ws / kPi;                                                  // projection
    base_area = BaseArea(q);
    const float mean_diameter = (q.ShaftDiameter + q.BaseDiameter) * 0.5f;
    const float Wm = 0.7853982f * (mean_diameter * mean_diameter);
    Wb = q.BaseDiameter > q.ShaftDiameter ? Wm : base_area;
  }
};

inline float Mean(const SoilValues& v) { return (v.Av + v.Ah) * 0.5f; }

template <class V>
V Broadcast(float x);
template <>
inline float Broadcast<float>(float x) {
  return x;
}
template <>
inline Float4 Broadcast<Float4>(float x) {
  return Splat(x);
}
inline void Put(float& to, float v) { to = v; }
inline void Put(float& to, Float4 v) { Store4(&to, v); }  // rows to .. to + 3 of one column

// The seven entries of shaft element j of q on shaft element i of p (or on four
// consecutive elements from i, with V = Float4).
template <class V>
void ShaftOnShaft(const Directions& dir, const SourceAreas& w, int n, int i, int j, V nu, V Av, V Ah, V fx,
                  V fy, V fz, const Point3& S, RealMatrix& pair_K) {
  const V Am = (Av + Ah) * 0.5f;
  const InfluencesOf<V> I = InfluencesFromTerms(
      mindlin_detail::AllTerms(nu, fx, fy, fz, Broadcast<V>(S.x), Broadcast<V>(S.y), Broadcast<V>(S.z)));
  Put(pair_K(i, j), Av * w.Ws * dir.AA(I));
  Put(pair_K(i, n + 1 + j), Am * w.Wt * dir.AX(I));
  Put(pair_K(n + 1 + i, j), Am * w.Ws * dir.XA(I));
  Put(pair_K(n + 1 + i, n + 1 + j), Ah * w.Wt * dir.XX(I));
  Put(pair_K(i, 2 * n + 1 + j), Am * w.Wt * dir.AY(I));
  Put(pair_K(2 * n + 1 + i, j), Am * w.Ws * dir.YA(I));
  Put(pair_K(2 * n + 1 + i, 2 * n + 1 + j), Ah * w.Wt * dir.YY(I));
}


// Field point on the rigid layer directly below the soil entry point of p, in q's frame.
Point3 RigidLayerPoint(const SoilGround& g, const PairSpacing& d) {
  return {d.Dx, d.Dy, g.borehole->DepthToRigidLayer + g.z0};
}

// Torsion between two near piles: each element of q is cut into 8 slices of 32 points
// round its shaft, and the field point of each element of p lies on its axis. The ring of
// q is placed by the absolute plan offsets, so a mirror image of p about q gives the
// same block. The whole block hangs from p's own soil entry level.
struct TorsionRing {
  float zp, rp, rq, dzs, dxs, dys, Wq, inv_rp, ring_x, ring_y, offset_x, offset_y;
  std::array<Trig, 32> ring;
  alignas(16) std::array<float, 32> ring_c, ring_s;  // the same, for four points at a time
  const PileAxis* p;

  TorsionRing(const PileAxis& field, const PileAxis& q, const PairSpacing& d) : p(&field) {
    zp = field.pile->SoilEntryZ;
    rp = field.pile->ShaftDiameter * 0.5f;
    rq = q.pile->ShaftDiameter * 0.5f;
    const float hs = q.h * 0.125f;
    dzs = q.a.c * q.e.c * hs;
    dxs = -q.a.s * hs;
    dys = -q.e.s * hs;
    Wq = dzs * 0.19635f * rq;
    inv_rp = 1.0f / rp;
    ring_x = q.a.c * rq;
    ring_y = q.e.c * rq;
    offset_x = std::fabs(d.Dx);
    offset_y = std::fabs(d.Dy);
    float T = -0.098175f;
    for (std::size_t k = 0; k < ring.size(); ++k) {
      T = T + 0.19635f;
      ring[k] = TrigOf(T);
      ring_c[k] = ring[k].c;
      ring_s[k] = ring[k].s;
    }
  }
  Point3 Field(int i) const {
    const float k = CentreSteps(i);
    return {-k * p->a.s * p->h, -k * p->e.s * p->h, zp + k * p->a.c * p->e.c * p->h};
  }
  // Centre of slice v of element j, as (x_m, y_m, z_m).
  Point3 Slice(int j, int v) const {
    const float m = static_cast<float>(8 * (j - 1) + v) - 0.5f;
    return {m * dxs, m * dys, zp + m * dzs};
  }
  Point3 Point(const Point3& slice, const Trig& t) const {
    return {t.c * ring_x + offset_x + slice.x, t.s * ring_y + offset_y + slice.y, slice.z};
  }
};

void TorsionBetweenPiles(const SoilGround& g, const PileAxis& p, const PileAxis& q, const PairSpacing& d,
                         const Directions& dir, RealMatrix& pair_K) {
  const int n = g.n;
  const bool poulos = g.poulos();
  const TorsionRing tr(p, q, d);
  for (int j = 1; j <= n; ++j) {
    for (int i = 1; i <= n; ++i) {
      const Point3 F = tr.Field(i);
      const LocalSoil field_soil = SoilAtPoint(g, F.z, p.index, i);
      float sum = 0.0f;
      for (int v = 1; v <= 8; ++v) {
        const Point3 c = tr.Slice(j, v);
        const SoilValues sv = CombineSoil(field_soil, SoilAtPoint(g, c.z, q.index, j), poulos);
        // Four ring points at a time, then their contributions summed one by one, in order.
        const Float4 nu = Splat(sv.nu), Fx = Splat(F.x), Fy = Splat(F.y), Fz = Splat(F.z), Qz = Splat(c.z);
        alignas(16) std::array<float, 32> part;
        for (std::size_t k = 0; k < part.size(); k += 4) {
          const Float4 rc = Load4(&tr.ring_c[k]);
          const Float4 rs = Load4(&tr.ring_s[k]);
          const Float4 Qx = rc * tr.ring_x + tr.offset_x + c.x;
          const Float4 Qy = rs * tr.ring_y + tr.offset_y + c.y;
          const InfluencesOf<Float4> I =
              InfluencesFromTerms(mindlin_detail::AllTerms(nu, Fx, Fy, Fz, Qx, Qy, Qz));
          Store4(&part[k], (rc * dir.YY(I) + rs * dir.XX(I)) * sv.Av * tr.Wq * tr.inv_rp);
        }
        for (const float x : part) sum += x;
      }
      pair_K(3 * n + 1 + i, 3 * n + 1 + j) = -sum;
    }
  }
}

}  // namespace

bool TorsionBetweenPilesApplies(const InteractionRule& rule, const PairSpacing& d, const Pile& q) {
  return (rule.torsion_always || IsNonZero(rule.Mz)) && d.s < 10.0f * q.ShaftDiameter;
}

void BuildPileInteractionMatrix(const SoilGround& g, const InteractionRule& rule, const PileAxis& p,
                                const PileAxis& q, RealMatrix& pair_K, bool with_torsion) {
  pair_K.fill(0.0f);
  const int n = g.n;
  if (n < 1) return;
  const PairSpacing d = SpacingOf(*p.pile, *q.pile);
  float limit = 0.0f;
  if (InteractionLimit(rule, *q.pile, &limit) && d.s > limit) return;

  const bool poulos = g.poulos();
  const Directions dir(p, q);
  const SourceAreas w(*q.pile, n);
  auto field = [&p, &d](int i) { return FieldPoint(p, d, i); };
  auto source = [&q](int j) { return SourcePoint(q, j); };

  // Shaft on shaft, four field elements at a time where four remain: rows i..i + 3 of a
  // column are contiguous, and each lane does what the one-element form does.
  for (int j = 1; j <= n; ++j) {
    const Point3 S = source(j);
    const LocalSoil& sj = q.at(j).soil;
    int i = 1;
    for (; i + 3 <= n; i += 4) {
      alignas(16) float nu[4], Av[4], Ah[4], fx[4], fy[4], fz[4];
      for (int l = 0; l < 4; ++l) {
        const SoilValues v = CombineSoil(p.at(i + l).soil, sj, poulos);
        const Point3 F = field(i + l);
        nu[l] = v.nu;
        Av[l] = v.Av;
        Ah[l] = v.Ah;
        fx[l] = F.x;
        fy[l] = F.y;
        fz[l] = F.z;
      }
      ShaftOnShaft(dir, w, n, i, j, Load4(nu), Load4(Av), Load4(Ah), Load4(fx), Load4(fy), Load4(fz), S, pair_K);
    }
    for (; i <= n; ++i) {
      const SoilValues v = CombineSoil(p.at(i).soil, sj, poulos);
      const Point3 F = field(i);
      ShaftOnShaft(dir, w, n, i, j, v.nu, v.Av, v.Ah, F.x, F.y, F.z, S, pair_K);
    }
  }

  if (with_torsion && TorsionBetweenPilesApplies(rule, d, *q.pile)) TorsionBetweenPiles(g, p, q, d, dir, pair_K);

  // The base of p as field.
  const Point3 Bp = field(n + 1);
  for (int j = 1; j <= n; ++j) {
    const SoilValues v = CombineSoil(p.at(n + 1).soil, q.at(j).soil, poulos);
    const float Am = Mean(v);
    const Influences I = MindlinInfluences(v.nu, Bp, source(j));
    pair_K(n + 1, j) = v.Av * w.Ws * dir.AA(I);
    pair_K(n + 1, n + 1 + j) = Am * w.Wt * dir.AX(I);
    pair_K(n + 1, 2 * n + 1 + j) = Am * w.Wt * dir.AY(I);
  }

  // The base of q as source.
  const Point3 Bq = source(n + 1);
  for (int i = 1; i <= n; ++i) {
    const SoilValues v = CombineSoil(p.at(i).soil, q.at(n + 1).soil, poulos);
    const float Am = Mean(v);
    const Influences I = MindlinInfluences(v.nu, field(i), Bq);
    pair_K(i, n + 1) = v.Av * w.Wb * dir.AA(I);
    pair_K(n + 1 + i, n + 1) = Am * w.Wb * dir.XA(I);
    pair_K(2 * n + 1 + i, n + 1) = Am * w.Wb * dir.YA(I);
  }

  // Base on base, over the whole area of the base of q.
  const SoilValues v = CombineSoil(p.at(n + 1).soil, q.at(n + 1).soil, poulos);
  pair_K(n + 1, n + 1) = v.Av * w.base_area * dir.AA(MindlinInfluences(v.nu, Bp, Bq));
}

bool BuildPileTorsionInteraction(const SoilGround& g, const InteractionRule& rule, const PileAxis& p,
                                 const PileAxis& q, RealMatrix& pair_K) {
  if (g.n < 1) return false;
  const PairSpacing d = SpacingOf(*p.pile, *q.pile);
  float limit = 0.0f;
  if (InteractionLimit(rule, *q.pile, &limit) && d.s > limit) return false;
  if (!TorsionBetweenPilesApplies(rule, d, *q.pile)) return false;
  TorsionBetweenPiles(g, p, q, d, Directions(p, q), pair_K);
  return true;
}

void RigidLayerInteractionCorrection(const SoilGround& g, const InteractionRule& rule, const PileAxis& p,
                                     const PileAxis& q, RealMatrix& pair_K) {
  const int n = g.n;
  if (n < 1) return;
  const PairSpacing d = SpacingOf(*p.pile, *q.pile);
  float limit = 0.0f;
  InteractionLimit(rule, *q.pile, &limit);  // without a limit of its own, 0
  if (d.s > limit) return;

  const bool poulos = g.poulos();
  const SourceAreas w(*q.pile, n);
  const float saq = q.a.s, caq = q.a.c, seq = q.e.s, ceq = q.e.c;
  // Only the vertical displacement on the rigid layer below the soil entry point of p is
  // removed, with no projection on the axis of p.
  const Point3 F = RigidLayerPoint(g, d);

  for (int j = 1; j <= n + 1; ++j) {
    const AxisPoint& a = q.at(j);
    const Point3 S = SourcePoint(q, j);
    // Poisson's ratio comes from the two depths alone, so one evaluation serves every row.
    const float nu = (p.at(1).rigid.nu + a.soil.nu) * 0.5f;
    const Influences I = MindlinInfluences(nu, F, S);
    const float Va = caq * ceq * I.Izz - seq * I.Izy - saq * I.Izx;
    const float Vx = saq * I.Izz + caq * I.Izx;
    const float Vy = seq * I.Izz + ceq * I.Izy;
    for (int i = 1; i <= n + 1; ++i) {
      const SoilValues v = CombineSoil(p.at(i).rigid, a.soil, poulos);
      if (j <= n) {
        const float Am = Mean(v);
        pair_K(i, j) = pair_K(i, j) - v.Av * w.Ws * Va;
        pair_K(i, n + 1 + j) = pair_K(i, n + 1 + j) - Am * w.Wt * Vx;
        pair_K(i, 2 * n + 1 + j) = pair_K(i, 2 * n + 1 + j) - Am * w.Wt * Vy;
      } else if (i <= n) {
        pair_K(i, n + 1) = pair_K(i, n + 1) - v.Av * w.Wb * Va;
      } else {
        pair_K(n + 1, n + 1) = pair_K(n + 1, n + 1) - v.Av * w.base_area * Va;
      }
    }
  }
}

namespace {

// The smallest box around some points. A coordinate that is not a number is left out: such
// a point equals no other.
struct Box {
  float lo[3] = {INFINITY, INFINITY, INFINITY}, hi[3] = {-INFINITY, -INFINITY, -INFINITY};
  void Take(const Point3& a) {
    const float c[3] = {a.x, a.y, a.z};
    for (int k = 0; k < 3; ++k) {
      if (c[k] < lo[k]) lo[k] = c[k];
      if (c[k] > hi[k]) hi[k] = c[k];
    }
  }
  bool Meets(const Box& o) const {
    for (int k = 0; k < 3; ++k)
      if (hi[k] < o.lo[k] || o.hi[k] < lo[k]) return false;
    return true;
  }
};

}  // namespace

int FindCoincidentPoints(const SoilGround& g, const InteractionRule& rule, const PileAxis& p, const PileAxis& q,
                         int* field_element, int* source_element) {
  const int n = g.n;
  const PairSpacing d = SpacingOf(*p.pile, *q.pile);
  float limit = 0.0f;
  const bool limited = InteractionLimit(rule, *q.pile, &limit);
  auto same = [](const Point3& a, const Point3& b) { return a.x == b.x && a.y == b.y && a.z == b.z; };
  if (!limited || d.s <= limit) {
    // Two load points can only meet where the boxes around each pile's points overlap;
    // between piles apart in plan (nearly every pair of a group) the boxes settle it in
    // one pass over each pile instead of one comparison for every pair of points.
    Box field, source;
    for (int i = 1; i <= n + 1; ++i) field.Take(FieldPoint(p, d, i));
    for (int j = 1; j <= n + 1; ++j) source.Take(SourcePoint(q, j));
    if (field.Meets(source)) {
      for (int i = 1; i <= n + 1; ++i) {
        const Point3 F = FieldPoint(p, d, i);
        for (int j = 1; j <= n + 1; ++j) {
          if (same(F, SourcePoint(q, j))) {
            *field_element = i;
            *source_element = j;
            return kMidpointsMeet;
          }
        }
      }
    }
    if (TorsionBetweenPilesApplies(rule, d, *q.pile)) {
      const TorsionRing tr(p, q, d);
      for (int i = 1; i <= n; ++i) {
        const Point3 F = tr.Field(i);
        for (int j = 1; j <= n; ++j) {
          for (int v = 1; v <= 8; ++v) {
            const Point3 c = tr.Slice(j, v);
            if (c.z != F.z) continue;
            for (const Trig& t : tr.ring) {
              if (same(F, tr.Point(c, t))) {
                *field_element = i;
                *source_element = j;
                return kRingMeetsAxis;
              }
            }
          }
        }
      }
    }
  }
  // The rigid layer correction between the piles, where it applies.
  if (IsNonZero(g.borehole->DepthToRigidLayer) && d.s <= (limited ? limit : 0.0f)) {
    const Point3 F = RigidLayerPoint(g, d);
    for (int j = 1; j <= n + 1; ++j) {
      if (same(F, SourcePoint(q, j))) {
        *field_element = 0;
        *source_element = j;
        return kRigidLayerMeets;
      }
    }
  }
  return kNoCoincidence;
}

}  // namespace quellon
