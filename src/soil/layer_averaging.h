// The ground as the soil matrices see it: properties at a depth in a stack of horizontal
// layers, the means of two depths, the smoothed vertical modulus down each pile, and the
// factor that turns a Poisson's ratio and a modulus into the multiplier of Mindlin's
// kernels.
//
// Two treatments of the vertical modulus are offered. The first (LayerAveraging 1) takes
// the mean of the moduli at the two points that a coefficient links. The second (any
// other value) first smooths the modulus around each element down the pile's own axis,
// with weights that halve at each element of distance, then takes the mean of the two
// smoothed values. The horizontal modulus always follows the first way.
#pragma once

#include "engine/arrays.h"
#include "engine/model.h"

namespace quellon {

// Property at depth z for a layered value V with gradient dV below the top of each
// layer. A depth on a boundary belongs to the lower layer, the last layer extends
// without limit, and a depth above the first layer (or a borehole without layers) gives 0.
float VerticalModulusAt(const Borehole& b, float z);
float HorizontalModulusAt(const Borehole& b, float z);
float PoissonRatioAt(const Borehole& b, float z);

float PoissonRatioAverage(const Borehole& b, float z1, float z2);
float PoulosVerticalStiffnessAverage(const Borehole& b, float z1, float z2);
float HorizontalStiffnessAverage(const Borehole& b, float z1, float z2);

// Weighted mean of column p of YamashitaEsv around row k (1 to n for an element, n + 1
// for the base): weight 1 at row k, halving with each row of distance out to four rows,
// rows above the first dropping out of numerator and denominator alike.
float YamashitaVerticalStiffnessAverage(const RealMatrix& yamashita_esv, int p, int k);

// Fills column p of YamashitaEsv (n + 5 rows) with the vertical modulus at the depths
// down pile p (whose frame is given): the element mid-points, the tip, then four rows
// below so that the smoothing of the last elements has neighbours. z0 is the level of
// the top of the embedded length that serves for every pile; depths is a work column of
// n + 5 rows.
void FillYamashitaColumn(const Borehole& b, const PileFrame& frame, int n, float z0, int p, float* depths,
                         RealMatrix& yamashita_esv);

// (nu + 1) / ((1 - nu) * 25.13) / E: Mindlin's 1/(16 pi Gs (1 - nu)) for the shear
// modulus Gs = E / (2 (1 + nu)), with 25.13 in place of 8 pi.
inline float MindlinCoefficient(float nu) { return (nu + 1.0f) / ((1.0f - nu) * 25.13f); }
inline float MindlinFactor(float nu, float E) { return MindlinCoefficient(nu) / E; }

// What the soil matrices read of the ground: the borehole, the table of smoothed vertical
// moduli, the number of elements per pile and the level z0 of the top of the embedded
// length of the first pile, which is the top of every pile's own block.
struct SoilGround {
  const Borehole* borehole = nullptr;
  const RealMatrix* yamashita_esv = nullptr;
  int n = 0;
  float z0 = 0.0f;

  bool poulos() const { return borehole->LayerAveraging == 1; }
};

// The ground at one point of a pile: the properties at its depth and, with the smoothed
// treatment, the smoothed modulus of its element (element n + 1 for the base). The depth
// and the element are separate inputs because the rigid layer terms read the depth of
// the rigid layer with the element numbers of the pile.
struct LocalSoil {
  float nu = 0.0f, Ev = 0.0f, Eh = 0.0f, Ym = 0.0f;
};
LocalSoil SoilAtPoint(const SoilGround& g, float z, int pile, int element);

// The factors that link a field point to a source point: Poisson's ratio, the vertical
// factor Av and the horizontal factor Ah.
struct SoilValues {
  float nu = 0.0f, Av = 0.0f, Ah = 0.0f;
};

// The means of a field point f and a source point s. With the smoothed treatment Av is
// 2 c0 over the sum of the two smoothed moduli, otherwise c0 over the mean modulus.
inline SoilValues CombineSoil(const LocalSoil& f, const LocalSoil& s, bool poulos) {
  SoilValues v;
  v.nu = (f.nu + s.nu) * 0.5f;
  const float c0 = MindlinCoefficient(v.nu);
  v.Av = poulos ? c0 / ((f.Ev + s.Ev) * 0.5f) : 2.0f * c0 / (f.Ym + s.Ym);
  v.Ah = c0 / ((f.Eh + s.Eh) * 0.5f);
  return v;
}

// Field point at depth zf on element f of pile p, source point at depth zs on element s
// of pile q.
inline SoilValues PairSoilValues(const SoilGround& g, float zf, int p, int f, float zs, int q, int s) {
  return CombineSoil(SoilAtPoint(g, zf, p, f), SoilAtPoint(g, zs, q, s), g.poulos());
}

// The base of pile p on itself at depth zb (or the rigid layer below it, at depth zb,
// for the base's own correction): with the smoothed treatment the one smoothed modulus
// of the base, not doubled.
SoilValues BaseOnItselfSoilValues(const SoilGround& g, float zf, float zs, int p);

}  // namespace quellon
