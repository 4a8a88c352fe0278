#include "engine/result_checks.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>

#include "engine/engine.h"
#include "engine/notify.h"

namespace quellon {

namespace {

// Where an unknown of the group (1 .. N, pile after pile) stands, in words.
std::string UnknownText(const Engine& e, int u) {
  const GroupLayout g = LayoutOf(e);
  const int n = g.n;
  const int p = g.PileOfUnknown(u);
  const int k = u - g.PileStart(p);
  const std::string pile = " of pile " + std::to_string(p);
  if (k <= n) return "the axial unknown of element " + std::to_string(k) + pile;
  if (k == n + 1) return "the base" + pile;
  if (k <= 2 * n + 1) return "the X unknown of element " + std::to_string(k - n - 1) + pile;
  if (k <= 3 * n + 1) return "the Y unknown of element " + std::to_string(k - 2 * n - 1) + pile;
  return "the torsional unknown of element " + std::to_string(k - 3 * n - 1) + pile;
}

std::string AxialRowText(const Engine& e, int r) {  // rows (p - 1)(n + 1) + k
  const int n = e.foundation.NumberOfElements;
  const int p = (r - 1) / (n + 1) + 1;
  const int k = r - (p - 1) * (n + 1);
  const std::string pile = " of pile " + std::to_string(p);
  return k == n + 1 ? "the base" + pile : "element " + std::to_string(k) + pile;
}

std::string ElementRowText(const Engine& e, int q) {  // rows (p - 1)n + k
  const int n = e.foundation.NumberOfElements;
  const int p = (q - 1) / n + 1;
  return "element " + std::to_string(q - (p - 1) * n) + " of pile " + std::to_string(p);
}

// The six unit movements of the cap, in the internal order.
const char* MovementText(int c) {
  static const char* const kText[6] = {"vertical movement", "movement along X", "rotation in the XZ plane",
                                       "movement along Y", "rotation in the YZ plane", "twist"};
  return c >= 1 && c <= 6 ? kText[c - 1] : "movement";
}

std::string Number(float v) {
  char buf[32];
  std::snprintf(buf, sizeof buf, "%g", static_cast<double>(v));
  return buf;
}

std::string IncrementText(int i) { return "increment " + std::to_string(i); }

int Fail(Engine& e, const std::string& text) {
  SendError(e, "Error - " + text);
  return 0;
}

// First non-finite row (from 1) of the first `rows` rows of v, 0 if none.
int BadRow(const RealVector& v, int rows) {
  rows = std::min(rows, v.size());
  if (rows < 1) return 0;
  const std::size_t at = FirstNonFinite(v.data(), static_cast<std::size_t>(rows));
  return at < static_cast<std::size_t>(rows) ? static_cast<int>(at) + 1 : 0;
}

// A vector of the increment, and how its rows are named.
enum class Rows { kAxial, kElement, kPile, kUnknown, kCap };

struct Vector {
  const char* name;
  const RealVector* v;
  Rows rows;
};

std::string RowText(const Engine& e, Rows kind, int r) {
  switch (kind) {
    case Rows::kAxial: return AxialRowText(e, r);
    case Rows::kElement: return ElementRowText(e, r);
    case Rows::kPile: return "pile " + std::to_string(r);
    case Rows::kUnknown: return UnknownText(e, r);
    case Rows::kCap: return std::string("the cap (") + MovementText(r) + ")";
  }
  return {};
}

int RowCount(const Engine& e, Rows kind) {
  const int n = e.foundation.NumberOfElements;
  const int P = e.foundation.NumberOfPiles;
  switch (kind) {
    case Rows::kAxial: return (n + 1) * P;
    case Rows::kElement: return n * P;
    case Rows::kPile: return P;
    case Rows::kUnknown: return NumberOfUnknowns(e);
    case Rows::kCap: return 6;
  }
  return 0;
}

template <std::size_t N>
int CheckVectors(Engine& e, const Vector (&vectors)[N], const std::string& when, const std::string& why) {
  for (const Vector& x : vectors) {
    const int r = BadRow(*x.v, RowCount(e, x.rows));
    if (r != 0)
      return Fail(e, when + "the " + x.name + (x.rows == Rows::kUnknown ? " at " : " of ") + RowText(e, x.rows, r) +
                         " is not a finite number (" + Number((*x.v)(r)) + ")" + why);
  }
  return 1;
}

// First non-finite entry of rows first .. first + count - 1 and columns c0 .. c1 of m;
// false when all are finite.
bool FindInBlock(const RealMatrix& m, int first, int count, int c0, int c1, int& row, int& col) {
  for (int c = c0; c <= c1; ++c) {
    const std::size_t at = FirstNonFinite(m.col(c) + (first - 1), static_cast<std::size_t>(count));
    if (at < static_cast<std::size_t>(count)) {
      row = first + static_cast<int>(at);
      col = c;
      return true;
    }
  }
  return false;
}

}  // namespace

std::size_t FirstNonFinite(const float* v, std::size_t n) {
  // A float is an infinity or a NaN exactly when its exponent bits are all set. Blocks are
  // scanned with integer operations only, which the compiler vectorises, and a block
  // that holds such a value is searched again for its place.
  constexpr std::size_t kBlock = 256;
  for (std::size_t start = 0; start < n; start += kBlock) {
    const std::size_t end = std::min(n, start + kBlock);
    std::uint32_t any = 0;
    for (std::size_t i = start; i < end; ++i) {
      std::uint32_t bits;
      std::memcpy(&bits, v + i, sizeof bits);
      any |= static_cast<std::uint32_t>((bits & 0x7f800000u) == 0x7f800000u);
    }
    if (any == 0) continue;
    for (std::size_t i = start; i < end; ++i)
      if (!std::isfinite(v[i])) return i;
  }
  return n;
}

int CheckLimitingStresses(Engine& e) {
  const Workspace& w = e.ws;
  const Vector limits[] = {{"limiting shaft or base stress", &w.LimitAxial, Rows::kAxial},
                           {"limiting stress in X", &w.LimitX, Rows::kElement},
                           {"limiting stress in Y", &w.LimitY, Rows::kElement},
                           {"limiting torsional stress", &w.LimitTorsion, Rows::kElement}};
  return CheckVectors(e, limits, "",
                      ": the strength of the ground at its depth is beyond what single precision can hold");
}

int CheckSoilFlexibilityRows(Engine& e, int p) {
  const GroupLayout g = LayoutOf(e);
  const int M = g.M;
  const int N = g.N;
  const RealMatrix& G = e.ws.G;
  if (G.rows() < N || G.cols() < N || p < 1) return 1;
  int row = 0, col = 0;
  // The blocks that the assembly found finite are skipped; the others are searched in
  // the order of the columns, so the first entry named is the same either way.
  const LogicalMatrix& state = e.ws.SoilBlockState;
  const int piles = e.foundation.NumberOfPiles;
  const bool known = state.rows() == piles && state.cols() == piles && p <= piles && M * piles == N;
  bool found = false;
  if (known) {
    for (int q = 1; q <= piles && !found; ++q) {
      if (state(p, q) == kBlockFinite) continue;
      found = FindInBlock(G, g.PileStart(p) + 1, M, g.PileStart(q) + 1, g.PileStart(q) + M, row, col);
    }
  } else {
    found = FindInBlock(G, g.PileStart(p) + 1, M, 1, N, row, col);
  }
  if (!found) return 1;
  return Fail(e, "the soil flexibility of " + UnknownText(e, row) + " under a load on " + UnknownText(e, col) +
                     " is not a finite number: two load points lie too close together, or the model's "
                     "dimensions are beyond single precision");
}

int CheckPileMatrices(Engine& e) {
  const GroupLayout g = LayoutOf(e);
  const int M = g.M;
  const int N = g.N;
  const Workspace& w = e.ws;
  int row = 0, col = 0;
  if (w.D.rows() >= N && w.D.cols() >= N) {
    for (int p = 1; p <= e.foundation.NumberOfPiles; ++p) {
      const int first = g.PileStart(p) + 1;
      if (FindInBlock(w.D, first, M, first, first + M - 1, row, col))
        return Fail(e, "the pile flexibility of pile " + std::to_string(p) +
                           " is not a finite number: its dimensions or section stiffnesses are beyond single "
                           "precision");
    }
  }
  if (w.UBCV.rows() >= N && w.UBCV.cols() >= 6 && FindInBlock(w.UBCV, 1, N, 1, 6, row, col))
    return Fail(e, "the movement that the cap's " + std::string(MovementText(col)) + " forces on " +
                       UnknownText(e, row) + " is not a finite number: the pile positions are beyond single precision");
  return 1;
}

int CheckTractions(Engine& e, int increment) {
  const int N = NumberOfUnknowns(e);
  const RealMatrix& t = e.ws.Tractions;
  if (t.rows() < N || t.cols() < 6) return 1;
  int row = 0, col = 0;
  if (!FindInBlock(t, 1, N, 1, 6, row, col)) return 1;
  return Fail(e, IncrementText(increment) + ": the solution for a unit " + MovementText(col) + " of the cap at " +
                     UnknownText(e, row) + " is not a finite number (" + Number(t(row, col)) +
                     "): the system of equations is singular or too ill-conditioned for single precision");
}

int CheckIncrementResults(Engine& e, int increment) {
  const Workspace& w = e.ws;
  const Vector results[] = {
      {"movement", &w.CapDispInc, Rows::kCap},
      {"axial stress increment", &w.StressAxialInc, Rows::kAxial},
      {"X stress increment", &w.StressXInc, Rows::kElement},
      {"Y stress increment", &w.StressYInc, Rows::kElement},
      {"torsional stress increment", &w.StressTorsionInc, Rows::kElement},
      {"axial head movement", &w.HeadDispAxialInc, Rows::kPile},
      {"X head movement", &w.HeadDispXInc, Rows::kPile},
      {"Y head movement", &w.HeadDispYInc, Rows::kPile},
      {"head twist", &w.HeadTwistInc, Rows::kPile},
      {"soil movement", &w.SoilDispInc, Rows::kUnknown},
      {"axial load increment", &w.LoadAxialInc, Rows::kAxial},
      {"X shear increment", &w.ShearXInc, Rows::kElement},
      {"XZ moment increment", &w.MomentXZInc, Rows::kElement},
      {"Y shear increment", &w.ShearYInc, Rows::kElement},
      {"YZ moment increment", &w.MomentYZInc, Rows::kElement},
      {"torque increment", &w.TorqueInc, Rows::kElement},
  };
  return CheckVectors(e, results, IncrementText(increment) + ": ",
                      ": the increment's system is too ill-conditioned for single precision");
}

}  // namespace quellon
