// Small helpers shared by the writers of the TXT report.
#pragma once

#include <cmath>
#include <string>

#include "engine/engine.h"
#include "files/report_out.h"

namespace quellon {

// The TXT report is written only while its unit is open.
inline bool TXTOpen(const Engine& e) { return e.project.TXTUnit > 0 && e.files.txt.is_open(); }
// A sink on the TXT report, closed when the report is.
inline ReportOut TXTOut(Engine& e) { return TXTOpen(e) ? ReportOut(e.files.txt) : ReportOut(); }

// The number a pile is known by in the report: its Number field, which the text model
// file may set to something other than its place p in the table.
inline int PileNumber(const Engine& e, int p) {
  const Foundation& f = e.foundation;
  if (p >= 1 && p <= static_cast<int>(f.PileTable.size())) return f.Piles(p).Number;
  return p;
}

// Element i of a vector, 0 where the vector has no such element (a cap vector of a
// workspace that was never created).
inline float ValueOr0(const RealVector& v, int i) { return i >= 1 && i <= v.size() ? v(i) : 0.0f; }

inline std::string Repeat(char c, int n) { return std::string(static_cast<std::size_t>(n > 0 ? n : 0), c); }

// Result values at or below these magnitudes print as 0, unless flag 38 asks for the
// small values as they are: loads and stresses, and movements (m and rad).
constexpr float kLoadCut = 0.001f;
constexpr float kMovementCut = 1e-6f;

// v, or +0 when its magnitude is not above the cut-off.
inline float Cut(float v, float cutoff) { return std::fabs(v) <= cutoff ? 0.0f : v; }

}  // namespace quellon
