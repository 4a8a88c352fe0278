#include "result_summary.h"

#include <cmath>
#include <cstdio>


namespace quellon_cli {

namespace {

// A depth to the centimetre; one that rounds to zero prints as 0.00, not as -0.00.
std::string Depth(double v) {
  char buf[32];
  std::snprintf(buf, sizeof buf, "%.2f", std::fabs(v) < 0.005 ? 0.0 : v);
  return buf;
}

}  // namespace

// The pile heads, and down each pile its largest bending moment and axial force, from the
// last piles block of the XML output.
void PrintPileResults(Console& c, const RunResults& r) {
  const IncrementResult* last = r.last_with_piles();
  c.print("");
  if (last == nullptr) {
    c.print("  Pile head loads: not in the XML output (reported at the last increment with flag 35,");
    c.print("  or at every increment with flags 27, 28 and 31)");
    return;
  }
  c.print("  Loads at the pile heads (kN, kNm, external axes):");
  c.print("    Pile          Fx          Fy          Fz          Mx          My          Mz  Name");
  for (std::size_t p = 0; p < last->piles.size() && p < r.piles.size(); ++p) {
    const PileResult& pile = last->piles[p];
    if (pile.elements.empty()) continue;
    const std::array<double, 6> h = HeadLoadsExternal(PileGeometry(r.piles[p], r.elements), pile.elements.front());
    char buf[256];
    std::snprintf(buf, sizeof buf, "    %4d %11.2f %11.2f %11.2f %11.2f %11.2f %11.2f  %s", pile.number, h[0], h[1],
                  h[2], h[3], h[4], h[5], pile.name.c_str());
    c.print(buf);
  }
  c.print("");
  c.print("  Down each pile (bending moment: resultant of the moments about X and Y; depth below");
  c.print("  the ground, negative above it; axial force positive in compression):");
  c.print("    Pile  max moment (kNm)  at depth (m)  max axial force (kN)  at depth (m)  Name");
  for (std::size_t p = 0; p < last->piles.size() && p < r.piles.size(); ++p) {
    const PileResult& pile = last->piles[p];
    const PileExtremes x = ExtremesOf(pile, PileGeometry(r.piles[p], r.elements));
    char buf[256];
    std::snprintf(buf, sizeof buf, "    %4d %17.2f %13s %21.2f %13s  %s", pile.number, x.moment,
                  Depth(x.moment_depth).c_str(), x.axial, Depth(x.axial_depth).c_str(), pile.name.c_str());
    c.print(buf);
  }
}

// The warnings that only the results of a run can give.
}  // namespace quellon_cli
