#include "solution/limiting_stresses.h"

#include <algorithm>
#include <cmath>

#include "engine/engine.h"
#include "engine/utilities.h"
#include "solution/solution.h"

namespace quellon {

namespace {


// Spacing ratio given by a pile that isn't ahead: large enough that the group rule never
// wins over the single-pile value.
constexpr float kNoNeighbourRatio = 10000.0f;

// A horizontal load counts only when it isn't zero; its sign alone picks the direction.
// One predicate serves both the ratio and the lateral limit, so that a load at the
// threshold is either present for both or absent for both.
bool HasLoad(float F) { return std::fabs(F) > kZero; }

// A layer's own cap: the value when it is positive, 0 (none) otherwise.
float LayerCap(float value) { return IsPositive(value) ? value : 0.0f; }

float Capped(float value, float cap) { return (cap != 0.0f && value > cap) ? cap : value; }

}  // namespace

float BearingCapacityFactorNq(float phi_degrees) { return std::pow(10.0f, 0.075f * phi_degrees - 0.75f); }

float FineSoilLateralFactor(float z, float D) {
  if (D > 0.0f && z < 3.0f * D) return 2.0f + (7.0f * z) / (3.0f * D);
  return 9.0f;
}

float RockLateralFactor(float z, float D, float k5) {
  if (!(D > 0.0f)) return 1.0f;
  const float f = (z / D + 1.0f) * k5;
  return f > 1.0f ? 1.0f : f;
}

int LayerAtDepth(const Borehole& b, float z) {
  int found = 0;
  for (int i = 1; i <= b.NumberOfLayers; ++i) {
    if (b.Layers(i).DepthToTop <= z) found = i;
  }
  return found;
}

float OverburdenAtDepth(const Borehole& b, int layer, float z) {
  float sv = b.Overburden;
  for (int i = 1; i < layer; ++i) {
    sv = sv + (b.Layers(i + 1).DepthToTop - b.Layers(i).DepthToTop) * b.Layers(i).WeightDensity;
  }
  const Layer& L = b.Layers(layer);
  return sv + (z - L.DepthToTop) * L.WeightDensity;
}

SpacingRatios GroupSpacingRatios(const Engine& e, int pile, RealVector& ax, RealVector& ay) {
  const Foundation& f = e.foundation;
  const Pile& own = f.Piles(pile);
  const float Ds = own.ShaftDiameter;
  const float Fx = e.actions.Fx;
  const float Fy = e.actions.Fy;
  SpacingRatios s;
  for (int j = 1; j <= f.NumberOfPiles; ++j) {
    const float dx = f.Piles(j).SoilEntryX - own.SoilEntryX;
    const float dy = f.Piles(j).SoilEntryY - own.SoilEntryY;
    const bool ahead_x = (Fx > 0.0f && dx > 0.0f) || (Fx < 0.0f && dx < 0.0f);
    const bool ahead_y = (Fy > 0.0f && dy > 0.0f) || (Fy < 0.0f && dy < 0.0f);
    ax(j) = ahead_x ? (dy * dy + dx * dx) / (std::fabs(dx) * Ds) : Ds * kNoNeighbourRatio;
    ay(j) = ahead_y ? (dy * dy + dx * dx) / (std::fabs(dy) * Ds) : Ds * kNoNeighbourRatio;
  }
  auto smallest = [&f](const RealVector& a) {
    float m = a(1);
    for (int j = 2; j <= f.NumberOfPiles; ++j) m = std::min(m, a(j));
    return m;
  };
  if (HasLoad(Fx)) s.Sx = smallest(ax);
  if (HasLoad(Fy)) s.Sy = smallest(ay);
  return s;
}

void LimitingStressesAtDepth(const Engine& e, float z, float diameter, int base_flag, const SpacingRatios& s,
                             float& shaft, float& lateral_x, float& lateral_y, float& base) {
  const Borehole& b = e.borehole;
  const int index = LayerAtDepth(b, z);
  const Layer* L = index > 0 ? &b.Layers(index) : nullptr;
  const bool known = L != nullptr && L->GroundType >= kCoarseSoil && L->GroundType <= kDirectValues;
  if (!known) {
    // No ground above the first layer (the stiffness look-up gives 0 there too), and no
    // strength description for an unknown ground type: nothing can be carried.
    if (base_flag == 0) {
      shaft = lateral_x = lateral_y = 0.0f;
    } else {
      base = 0.0f;
    }
    return;
  }

  const float sv = OverburdenAtDepth(b, index, z);
  const bool load_x = HasLoad(e.actions.Fx);
  const bool load_y = HasLoad(e.actions.Fy);
  float q_shaft = 0.0f, q_x = 0.0f, q_y = 0.0f, q_base = 0.0f;

  switch (L->GroundType) {
    case kCoarseSoil: {
      // Shaft friction from the horizontal effective stress; lateral from the passive
      // pressure kp^2 sv of a single pile, or from the wedge between the pile and the
      // neighbour ahead of it, 2 S sv tan phi, whichever is smaller.
      const float phi = DegreesToRadians(L->phi);
      const float delta = DegreesToRadians(L->delta);
      const float kp = (1.0f + std::sin(phi)) / (1.0f - std::sin(phi));
      const float single = sv * (kp * kp);
      q_shaft = sv * L->Ks * std::tan(delta);
      q_x = load_x ? std::min(single, 2.0f * s.Sx * sv * std::tan(phi)) : single;
      q_y = load_y ? std::min(single, 2.0f * s.Sy * sv * std::tan(phi)) : single;
      const float Nq = e.project.AutoNq == 1 ? BearingCapacityFactorNq(L->phi) : e.project.Nq;
      q_base = Nq * sv;
      break;
    }
    case kFineSoil: {
      // Undrained strength growing with depth inside the layer; the lateral factor grows
      // from 2 at the surface to 9 at three diameters, cut by the group wedge 2 S c.
      const float c = L->cu + (z - L->DepthToTop) * L->dcu;
      const float B = FineSoilLateralFactor(z, diameter);
      q_shaft = c * L->alpha;
      q_x = load_x ? std::min(B * c, 2.0f * s.Sx * c) : B * c;
      q_y = load_y ? std::min(B * c, 2.0f * s.Sy * c) : B * c;
      q_base = 9.0f * c;
      break;
    }
    case kRock: {
      // Power laws in the unconfined strength, normalised by 100 kPa.
      const float ratio = L->qu / 100.0f;
      q_shaft = L->k1 * 100.0f * std::pow(ratio, L->k2);
      q_x = q_y = RockLateralFactor(z, diameter, L->k5) * L->k3 * 100.0f * std::pow(ratio, L->k4);
      q_base = L->k3 * 100.0f * std::pow(ratio, L->k4);
      break;
    }
    default: {  // kDirectValues
      q_shaft = L->DirectSkinFriction;
      q_x = q_y = L->HasDirectLateral ? L->DirectLateral
                                      : L->DirectEndBearing * RockLateralFactor(z, diameter, L->k5);
      q_base = L->DirectEndBearing;
      break;
    }
  }

  if (base_flag == 0) {
    shaft = Capped(q_shaft, LayerCap(L->MaxSkinFriction));
    lateral_x = q_x;
    lateral_y = q_y;
  } else {
    base = Capped(q_base, LayerCap(L->MaxBearingPressure));
  }
}

void LimitingStressesAllPiles(Engine& e) {
  if (!e.project.NonLinear) return;
  const Foundation& f = e.foundation;
  const GroupLayout g = LayoutOf(e);
  const int n = g.n;
  const int P = g.P;
  if (P < 1) return;
  Workspace& w = e.ws;

  // The ratios of every neighbour go through two work vectors. Without them no limit can
  // be worked out, and every element keeps the values of the one before: all 0.
  RealVector ax, ay;
  const bool have_work = Create1DRealMatrix(e, ax, P) == 1 && Create1DRealMatrix(e, ay, P) == 1;

  const float shaft_cap = e.project.LimitingShaftFriction;
  const float base_cap = e.project.LimitingBearingPressure;
  float shaft = 0.0f, lateral_x = 0.0f, lateral_y = 0.0f, base = 0.0f;
  for (int p = 1; p <= P; ++p) {
    const Pile& pile = f.Piles(p);
    const float Lz = f.Frame(p).vertical;  // vertical depth of the embedded pile
    const SpacingRatios s = have_work ? GroupSpacingRatios(e, p, ax, ay) : SpacingRatios{};

    if (n > 0) {
      // Element centres, stepped from the soil entry level of the first pile (the level
      // used for every pile), by whole element heights in single precision.
      float z = f.Piles(1).SoilEntryZ - Lz / static_cast<float>(2 * n);
      const float dz = Lz / static_cast<float>(n);
      for (int k = 1; k <= n; ++k) {
        z = z + dz;
        if (have_work) LimitingStressesAtDepth(e, z, pile.ShaftDiameter, 0, s, shaft, lateral_x, lateral_y, base);
        if (IsPositive(shaft_cap) && shaft > shaft_cap) shaft = shaft_cap;
        // Torsional shear is resisted by the same interface as axial friction.
        const int q = g.ElementRow(p, k);
        w.LimitAxial(g.AxialRow(p, k)) = shaft;
        w.LimitTorsion(q) = shaft;
        w.LimitX(q) = lateral_x;
        w.LimitY(q) = lateral_y;
      }
    }

    const float z_base = Lz + pile.SoilEntryZ;
    if (have_work) LimitingStressesAtDepth(e, z_base, pile.ShaftDiameter, 1, s, shaft, lateral_x, lateral_y, base);
    if (IsPositive(base_cap) && base > base_cap) base = base_cap;
    w.LimitAxial(g.AxialRow(p, n + 1)) = base;
  }
}

}  // namespace quellon
