// The fixed-column number forms of the engine's text outputs (LOG, TXT report, LOG
// echo lines). A width of 0 means minimal width. A value that does not fit its field
// fills the field with asterisks, and so does a value that is not finite.
//
//   FormatInt(v, w)         integer, right-justified in w columns
//   FormatIntPadded(v, w)   integer in exactly w digits, zero-padded on the left
//   FormatFix(v, w, d)      fixed point, d decimals; with w = 0 a magnitude below 1 has
//                           no digit before the point (".50"), and d = 0 keeps the
//                           point ("12.")
//   FormatSci(v, w, d)      one digit before the point, d decimals, exponent E+03
//   FormatFrac(v, w, d)     point first ("0.12E+03"), the leading 0 where the width
//                           allows; d below 1 counts as 1
//
// A zero prints without a sign, whatever the sign bit of the value: a -0.0 that falls
// out of the arithmetic means nothing to the reader. A negative value that merely
// rounds to zero keeps its sign ("-0.00").
#pragma once

#include <string>

namespace quellon {

std::string FormatInt(long long v, int w = 0);
std::string FormatIntPadded(long long v, int w);
std::string FormatFix(double v, int w, int d);
std::string FormatSci(double v, int w, int d);
// FormatSci appended to out, for the long rows of the report's tables.
void AppendSci(std::string& out, double v, int w, int d);
std::string FormatFrac(double v, int w, int d);

// Right-justifies s in w columns (w = 0: unchanged); asterisks if it is wider.
std::string Justify(const std::string& s, int w);

}  // namespace quellon
