// Number forms of the text model file.
//
//   fixed(d)  minimal width and exactly d decimals. With d = 0 the point stays ("12."), a
//             magnitude below 1 has no digit before the point (".50"), zero with d = 0
//             is "0.".
//   trim(n)   the decimals run up to the last non-zero one, at most n; a whole number
//             keeps its point ("2500.") and a magnitude below 1 keeps its leading zero
//             ("0.25"). The decimals are counted in single precision before rounding,
//             and a value with more than n decimals is rounded to n, keeping them all
//             (2.996 -> "3.00", 0.005 -> "0.00").
#pragma once

#include <string>

namespace quellon {

// v with exactly d decimals, always a digit before the point, the point kept when d is 0
// ("12."), no padding. An exact tie rounds away from zero (0.125 -> "0.13"), as an
// engineer rounds by hand, rather than to even. Shared by the XML output.
std::string DecimalText(double v, int d);
// The same text, appended to out.
void AppendDecimalText(std::string& out, double v, int d);

// The field that trim(n) gives a value: decimals and width (0 = minimal width).
struct TrimmedField {
  int decimals = 0;
  int width = 0;
};

// Works the field out for v alone, in single precision, so that the written text is the
// one a reader of the same value reproduces.
TrimmedField TrimmedFieldOf(float v, int n);

std::string FormatTrimmed(float v, int n);
// fixed(d) as above.
std::string FormatFixed(float v, int d);

}  // namespace quellon
