// The frame of one pile: its two rakes turned into trigonometry, and the lengths along
// its axis that every stage of a run reads. The group geometry makes one frame per pile
// at the start of a run (MakePileFrames), and the model checks, the soil blocks, the pile
// matrices, the cap's boundary conditions and the increments all read it, so each value
// is worked out once, by one sequence of float operations, and every reader sees the
// same bits.
//
// A positive rake carries the lower end of the pile towards minus X (about X) or minus Y
// (about Y). The frame holds the plain sines, cosines and tangents; each reader applies
// the sign of its own convention where it uses them, which flips no bit.
//
// Element centres along a pile come in two forms, which differ in the last bit, so each
// reader names the one it uses: scaled, (i - 0.5) element lengths from the top
// (CentreSteps); and stepped, the first half a step down and each next one a whole step
// further (SteppedCentres).
#pragma once

#include <cmath>

namespace quellon {

struct Pile;
struct Foundation;

// Sine and cosine of an angle, worked out once by the caller of a kernel in a loop.
struct Trig {
  float s, c;
};
inline Trig TrigOf(float angle) { return {std::sin(angle), std::cos(angle)}; }

struct PileFrame {
  float a = 0.0f, e = 0.0f;               // the rakes about X and about Y, in radians
  float ca = 1.0f, sa = 0.0f, ta = 0.0f;  // cos, sin, tan of a
  float ce = 1.0f, se = 0.0f, te = 0.0f;  // cos, sin, tan of e
  // The directions across the pile in its X and Y planes, in which the transverse loads
  // and movements act: each rake turned by a right angle.
  Trig normal_x{1.0f, 0.0f}, normal_y{1.0f, 0.0f};
  float h = 0.0f;            // element length along the pile, L / n
  float free_length = 0.0f;  // free-standing part along the pile's axis, F / (ca ce)
  float vertical = 0.0f;     // vertical depth of the embedded pile, ca ce L

  // The rakes as the Mindlin kernels take them.
  Trig RakeX() const { return {sa, ca}; }
  Trig RakeY() const { return {se, ce}; }
};

// The frame of a pile of n elements under a cap whose free-standing length is F.
PileFrame MakePileFrame(const Pile& pile, int n, float free_standing);
// One frame per pile of f (Frames), from its piles, element count and free-standing length.
void MakePileFrames(Foundation& f);

// Scaled centres: element i's centre lies this many element lengths below its top.
inline float CentreSteps(int i) { return static_cast<float>(i) - 0.5f; }

// Stepped centres: each call gives the next centre, the first half a step beyond start
// (or half a step from nothing), each next a whole step beyond the one before, as the
// meshes lay them out.
class SteppedCentres {
 public:
  SteppedCentres(float start, float step) : next_(start + step / 2.0f), step_(step) {}
  explicit SteppedCentres(float step) : next_(step / 2.0f), step_(step) {}
  float operator()() {
    const float c = next_;
    next_ = next_ + step_;
    return c;
  }

 private:
  float next_, step_;
};

}  // namespace quellon
