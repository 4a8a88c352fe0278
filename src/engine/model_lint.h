// Warnings about a model that a run accepts but whose numbers the method makes
// misleading: elements shorter than the pile is wide, stiffnesses that only a unit slip
// explains, piles closer than the point-load idealisation carries, two piles that share
// one pile matrix although they differ, and a torque on the cap, which the unit twist
// handles as a finite rotation. Each warning has a stable code and names the pile, layer
// or pair it concerns.
//
// Thresholds (quellon.h repeats them):
//   short-elements       element length L/n below the shaft diameter;
//   section-stiffness    modulus implied by EA, EIx, EIy over the section (solid, or hollow
//                        with the internal diameter) outside 1 to 500 GPa, the shear
//                        modulus implied by GJ outside 0.4 to 200 GPa, or the moduli
//                        implied by EA and by EI more than a factor of 10 apart;
//   soil-stiffness       Ev or Eh at the middle of a layer (5 m below the top of the last)
//                        outside 1 MPa to 20 GPa;
//   close-piles          two piles nearer than 2.5 shaft diameters (the larger), centre to
//                        centre where they enter the ground;
//   shared-pile-matrix   a pile alike its predecessor in everything the engine compares
//                        before reusing a pile matrix, but with another reinforced length or
//                        unreinforced section;
//   cap-torque           a torque about the centre of rotation on a group of two or more.
#pragma once

#include <vector>

#include "engine/diagnostics.h"

namespace quellon {

struct Engine;

// Appends the warnings of the model in hand. Needs the soil entry points and the centre
// of rotation (PrepareGroupGeometry) and a model that CheckModel accepts. Reads only.
void LintModel(const Engine& e, std::vector<Diagnostic>& out);

}  // namespace quellon
