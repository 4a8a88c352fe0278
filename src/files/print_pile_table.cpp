#include "files/print_pile_table.h"

#include <algorithm>
#include <string>

#include "engine/engine.h"
#include "files/number_forms.h"
#include "files/txt_common.h"

namespace quellon {

namespace {

constexpr int kPilesPerPanel = 6;
constexpr int kYieldPilesPerPanel = 20;

// Element k of pile p in a group vector of `rows` rows per pile. Group vectors have N
// rows, at least (n + 1) P, so the guard only matters for a caller's mistake.
float At(const RealVector& v, int rows, int p, int k) {
  const int i = (p - 1) * rows + k;
  return i >= 1 && i <= v.size() ? v(i) : 0.0f;
}

}  // namespace

void PrintPileTable(const Engine& e, ReportOut& out, const RealVector& table, bool base_row) {
  if (!out.open()) return;
  const int P = e.foundation.NumberOfPiles;
  const int rows = e.foundation.NumberOfElements + (base_row ? 1 : 0);
  std::string text;
  for (int first = 1; first <= P; first += kPilesPerPanel) {
    const int last = std::min(first + kPilesPerPanel - 1, P);
    text = " Pile       " + FormatInt(PileNumber(e, first), 4);
    for (int p = first + 1; p <= last; ++p) text += FormatInt(PileNumber(e, p), 10);
    out.line(text);
    out.line(" Element ");
    for (int k = 1; k <= rows; ++k) {
      text = FormatInt(k, 5) + "      ";
      for (int p = first; p <= last; ++p) AppendSci(text, At(table, rows, p, k), 10, 2);
      out.line(text);
    }
    out.line(" ");
  }
}

void PrintPileTableWithHead(const Engine& e, ReportOut& out, const RealVector& head, const RealVector& table,
                            bool base_row) {
  if (!out.open()) return;
  const int P = e.foundation.NumberOfPiles;
  const int rows = e.foundation.NumberOfElements + (base_row ? 1 : 0);
  std::string text;
  for (int first = 1; first <= P; first += kPilesPerPanel) {
    const int last = std::min(first + kPilesPerPanel - 1, P);
    text = " Pile       " + FormatInt(PileNumber(e, first), 4);
    for (int p = first + 1; p <= last; ++p) text += FormatInt(PileNumber(e, p), 10);
    out.line(text);
    out.line(" Element ");
    text = "    Head  ";
    for (int p = first; p <= last; ++p) text += FormatFrac(At(head, 1, p, 1), 10, 2);
    out.line(text);
    for (int k = 1; k <= rows; ++k) {
      text = FormatInt(k, 5) + "     ";
      for (int p = first; p <= last; ++p) AppendSci(text, At(table, rows, p, k), 10, 2);
      out.line(text);
    }
  }
  out.line(" ");
}

void PrintYieldTable(const Engine& e, ReportOut& out, const LogicalMatrix& yielded, int row, bool base_row) {
  if (!out.open()) return;
  const int P = e.foundation.NumberOfPiles;
  const int rows = e.foundation.NumberOfElements + (base_row ? 1 : 0);
  const bool row_ok = row >= 1 && row <= yielded.rows();
  std::string text;
  for (int first = 1; first <= P; first += kYieldPilesPerPanel) {
    const int last = std::min(first + kYieldPilesPerPanel - 1, P);
    text = " Element    ";
    for (int p = first; p <= last; ++p) text += FormatInt(PileNumber(e, p), 3);
    out.line(text);
    out.line("");
    for (int k = 1; k <= rows; ++k) {
      text = FormatInt(k, 4) + "      ";
      for (int p = first; p <= last; ++p) {
        const int c = (p - 1) * rows + k;
        const bool yes = row_ok && c >= 1 && c <= yielded.cols() && yielded(row, c) != 0;
        text += FormatInt(yes ? 1 : 0, 3);
      }
      out.line(text);
    }
  }
}

}  // namespace quellon
