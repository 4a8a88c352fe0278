#include "engine/pile_frame.h"

#include <algorithm>

#include "engine/model.h"
#include "engine/utilities.h"

namespace quellon {

PileFrame MakePileFrame(const Pile& pile, int n, float free_standing) {
  PileFrame f;
  f.a = DegreesToRadians(pile.RakeX);
  f.e = DegreesToRadians(pile.RakeY);
  f.ca = std::cos(f.a);
  f.sa = std::sin(f.a);
  f.ta = std::tan(f.a);
  f.ce = std::cos(f.e);
  f.se = std::sin(f.e);
  f.te = std::tan(f.e);
  f.normal_x = TrigOf(f.a + kHalfPi);
  f.normal_y = TrigOf(f.e + kHalfPi);
  f.h = pile.Length / static_cast<float>(n);
  f.free_length = free_standing / (f.ca * f.ce);
  f.vertical = f.ca * f.ce * pile.Length;
  return f;
}

void MakePileFrames(Foundation& f) {
  const int P = static_cast<int>(std::min(f.PileTable.size(), static_cast<std::size_t>(std::max(f.NumberOfPiles, 0))));
  f.Frames.assign(static_cast<std::size_t>(P), PileFrame{});
  for (int p = 1; p <= P; ++p)
    f.Frames[static_cast<std::size_t>(p - 1)] = MakePileFrame(f.Piles(p), f.NumberOfElements, f.FreeStandingLength);
}

}  // namespace quellon
