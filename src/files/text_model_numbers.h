// Number forms of the text model file.
//
//   fixed(d)  minimal width and exactly d decimals. With d = 0 the point stays ("12."), a
//             magnitude below 1 has no digit before the point (".50"), zero with d = 0
//             is "0.".
//   trim(n)   the decimals run up to the last non-zero one, at most n; a whole number
//             keeps its point ("2500.") and a magnitude below 1 keeps its leading zero
//             ("0.25"). Values with more than n decimals are rounded to n.
#pragma once

#include <string>

namespace quellon {

// The field that trim(n) gives a value: decimals and width (0 = minimal width).
struct TrimmedField {
  int decimals = 0;
  int width = 0;
};

// Works the field out for v alone, in single precision, so that the written text is the
// one a reader of the same value reproduces.
TrimmedField TrimmedFieldOf(float v, int n);

std::string FormatTrimmed(float v, int n);
std::string FormatFixed(float v, int d);

}  // namespace quellon
