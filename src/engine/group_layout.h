// Where each unknown of the group stands, and the two orders of the cap's six axes.
//
// Symbols: P piles, n elements per pile, M = 4n + 1 unknowns of one pile, N = MP of the
// group. The unknowns run pile after pile; within pile p, axial 1 to n + 1 (the base
// last), then n each of X, Y and torsion. The result tables keep two row orders: the
// axial ones n + 1 rows a pile (the toe last), the transverse and torsional ones n.
#pragma once

namespace quellon {

struct GroupLayout {
  int n = 0, P = 0, M = 0, N = 0;

  GroupLayout() = default;
  GroupLayout(int elements, int piles) : n(elements), P(piles), M(4 * elements + 1), N((4 * elements + 1) * piles) {}

  // Unknowns before pile p's first.
  int PileStart(int p) const { return (p - 1) * M; }
  int AxialUnknown(int p, int k) const { return (p - 1) * M + k; }  // k = n + 1: the base
  int XUnknown(int p, int k) const { return (p - 1) * M + n + 1 + k; }
  int YUnknown(int p, int k) const { return (p - 1) * M + 2 * n + 1 + k; }
  int TorsionUnknown(int p, int k) const { return (p - 1) * M + 3 * n + 1 + k; }
  // The same within one pile's block of M unknowns (pile 1's numbers), as the pile and
  // soil matrices of a pile are indexed.
  int XInPile(int k) const { return n + 1 + k; }
  int YInPile(int k) const { return 2 * n + 1 + k; }
  int TorsionInPile(int k) const { return 3 * n + 1 + k; }
  // The pile whose block holds unknown u.
  int PileOfUnknown(int u) const { return (u - 1) / M + 1; }
  // Rows of the axial tables (k = n + 1: the toe) and of the element tables.
  int AxialRow(int p, int k) const { return (p - 1) * (n + 1) + k; }
  int ElementRow(int p, int k) const { return (p - 1) * n + k; }
  int AxialRows() const { return (n + 1) * P; }
  int ElementRows() const { return n * P; }
};

// The cap's six axes. Internal order: 1 vertical, 2 X, 3 rotation in XZ, 4 Y, 5 rotation
// in YZ, 6 twist. External order (the host and the documents): X, Y, Z, about X, about Y,
// about Z. kInternalAxis[a - 1] is the internal axis of external axis a.
inline constexpr int kInternalAxis[6] = {2, 4, 1, 5, 3, 6};

// Internal axis of external axis a (1 to 6); 0 for any other a.
inline int ConvertAxis(int a) { return a >= 1 && a <= 6 ? kInternalAxis[a - 1] : 0; }

}  // namespace quellon
