// The non-linear soil model: hyperbolic softening of the soil flexibility, yield and
// release of elements, and elastic unloading. UpdateSoilFlexibility (solution.h) runs
// after each increment of a non-linear run and leaves GD ready for the next; the softened
// soil flexibility itself is read through SoftenedSoilFlexibility (workspace.h).
#pragma once

namespace quellon {

// Smallest softening factor: the share of its elastic stiffness that the soil at an
// element keeps once its stress has reached what the hyperbolic law can describe. It is
// the factor the law gives at 99 per cent of the limit, (1 - 0.99)^2.
constexpr float kMinimumSofteningFactor = 1.0e-4f;

// Factor by which the soil flexibility column of an element is divided, for a stress s,
// a limit l and a hyperbolic constant R: the tangent stiffness of the hyperbolic law,
// f = (1 - |s| R / |l|)^2, with three guards.
//
// - R = 0 turns softening off: f = 1 for any stress and limit, the elastic-perfectly
//   plastic model.
// - Zero limit (|l| below 1e-20): the ground has no strength there, so the element is
//   fully mobilised even at zero stress. A stress within 1e-20 of zero counts as at the
//   limit, and the factor is the law's value at the limit, (1 - R)^2; any larger stress
//   is beyond the limit.
// - At or beyond the limit of the law (|s| R / |l| >= 1, or not a number) the square
//   would turn back up and make a failed element stiffer than elastic, or divide by 0.
//   The factor stays at kMinimumSofteningFactor instead; so does any smaller value of
//   the law, so that the factor never rises as the stress grows.
//
// Such an element is almost always released in the same update, which overwrites its
// column; the floor shows only where it isn't (an element unloading in X or Y keeps its
// softened column of G), and keeps the softened G finite there.
float SofteningFactor(float stress, float limit, float R);

}  // namespace quellon
