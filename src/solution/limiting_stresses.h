// Limiting stresses of the ground: the greatest shaft friction, base pressure, lateral
// normal stress and torsional shear that the ground can carry at a pile element. They
// depend on the depth, on the ground type of the layer there and, for the lateral
// limits, on the neighbours that stand ahead of a pile in the direction of the
// horizontal load. LimitingStressesAllPiles (solution.h) fills the four limit vectors
// of the workspace once, before the first increment of a non-linear run.
#pragma once

#include "engine/arrays.h"

namespace quellon {

struct Engine;
struct Borehole;

// Bearing capacity factor from the angle of shearing resistance in degrees:
// 10^(0.075 phi - 0.75).
float BearingCapacityFactorNq(float phi_degrees);

// Lateral factor of fine soil at depth z for a pile of diameter D: rises linearly from 2
// at the surface, 2 + 7z / (3D), to 9 at z = 3D, and stays 9 below (or for D <= 0).
float FineSoilLateralFactor(float z, float D);

// Lateral factor of rock: (z / D + 1) k5, at most 1; 1 when D <= 0.
float RockLateralFactor(float z, float D, float k5);

// The layer that holds depth z: the last one whose top is at or above z, so a depth on
// a boundary belongs to the lower layer and the last layer goes on without end. 0 when
// z lies above the top of the first layer, or there are no layers: there is no ground.
int LayerAtDepth(const Borehole& b, float z);

// Vertical effective stress at depth z inside layer L (L >= 1): the borehole's
// overburden, plus the weight of each whole layer above L, plus the part of L above z.
// The sum runs layer by layer from the top, in single precision.
float OverburdenAtDepth(const Borehole& b, int layer, float z);

// Spacing ratios of a pile in the direction of the horizontal load. A neighbour j ahead
// of the pile (its soil entry point lies further in the direction of the load) gives
// (dx^2 + dy^2) / (|d| Ds), d being the offset along the load; every other pile,
// itself included, gives Ds * 10000; the ratio is the smallest of these. Without a load
// in that direction (|F| not above 1e-20) the ratio is 0 and the lateral limit in that
// direction is the single-pile value.
struct SpacingRatios {
  float Sx = 0.0f;
  float Sy = 0.0f;
};

// Sx and Sy of pile `pile` (1-based). ax and ay are work vectors of at least P reals;
// they receive the ratio of every pile j before the smallest is taken.
SpacingRatios GroupSpacingRatios(const Engine& e, int pile, RealVector& ax, RealVector& ay);

// Limits at depth z for a pile of diameter `diameter` with spacing ratios `s`. With
// base_flag 0 it sets shaft, lateral_x and lateral_y; with base_flag 1 it sets base; the
// outputs that don't belong to the flag keep their values. The layer's own caps
// (MaxSkinFriction, MaxBearingPressure) are applied; the project-wide caps are not.
// Where there is no ground (above the first layer) or the layer's ground type is
// unknown, the limits set are 0: the ground carries nothing there.
void LimitingStressesAtDepth(const Engine& e, float z, float diameter, int base_flag, const SpacingRatios& s,
                             float& shaft, float& lateral_x, float& lateral_y, float& base);

}  // namespace quellon
