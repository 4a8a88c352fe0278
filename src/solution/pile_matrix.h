// The structural flexibility of one pile: the column and the two cantilevers built in
// at the rigid cap, and the torsion bar. An entry of pile_D is the movement of one
// element, relative to the cap, under a unit stress on another element.
#pragma once

#include "engine/model.h"

namespace quellon {

struct Engine;

// Deflection at the centre c of an element of length h, distance c from the cap, under
// a load of Ds per unit length spread over the element itself, on a cantilever of
// flexural stiffness EI built in at the cap. The part of the element above c bends the
// beam as loads below-or-at the point of interest, the part below c as loads beyond it.
inline float CantileverSelfDeflection(float c, float h, float Ds, float EI) {
  const float t = c - h / 2.0f;
  const float c2 = c * c;
  const float c3 = c2 * c;
  const float c4 = c2 * c2;
  const float t3 = t * t * t;
  const float t4 = (t * t) * (t * t);
  return (((c3 - t3) * c - (c4 - t4) / 4.0f) + c2 * h * (0.375f * h + c)) * Ds / (6.0f * EI);
}

// Fills the workspace's pile_D (M by M) for pile p from its record and the section
// tables; every entry outside the four blocks is zero.
void BuildPileMatrix(Engine& e, int p);

// Whether pile b can take over the pile matrix built for pile a: the same dimensions,
// rakes and reinforced section within 1e-20, and both with a reinforced length. Two piles
// without a reinforced length are never taken as alike.
bool PilesStructurallyAlike(const Pile& a, const Pile& b);

}  // namespace quellon
