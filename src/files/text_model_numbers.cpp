#include "files/text_model_numbers.h"

#include <cmath>
#include <cstdio>

namespace quellon {

TrimmedField TrimmedFieldOf(float v, int n) {
  const float a = std::fabs(v);
  // Find the last non-zero decimal within n places: scale by 10^k, from k = n - 1
  // downwards, until the scaled value has a fractional part. The products are single
  // precision on purpose: 2.3f * 10 is 23 exactly in float, so "2.3" stays "2.3".
  int k = n - 1;
  while (k >= 0) {
    float scale = 1.0f;
    for (int i = 0; i < k; ++i) scale *= 10.0f;
    const float scaled = a * scale;
    const float fraction = scaled - std::trunc(scaled);
    if (fraction != 0.0f) break;  // NaN lands here too, and keeps n decimals
    --k;
  }
  TrimmedField f;
  f.decimals = k + 1;
  // Below 1 (with a small allowance, so 0.99996 counts as 1) the field is exactly wide
  // enough for "0." and the decimals, which keeps the leading zero.
  if (a > 0.0f && std::floor(std::log10(a) + 2.1715e-5f) < 0.0f) {
    f.width = f.decimals + 2 + (v < 0.0f ? 1 : 0);
  }
  return f;
}

std::string DecimalText(double v, int d) {
  if (d < 0) d = 0;
  double a = std::fabs(v);
  // For the few decimals of these files a float times 10^d is exact in double, so an
  // exact tie is seen as one; nudged up by one unit it rounds away from zero.
  if (d <= 6 && std::isfinite(a)) {
    const double scaled = a * std::pow(10.0, d);
    if (scaled - std::floor(scaled) == 0.5) a = std::nextafter(a, INFINITY);
  }
  char buf[400];
  std::snprintf(buf, sizeof buf, "%#.*f", d, a);
  std::string s(buf);
  // A value that rounds to zero prints as zero, without a sign: read back it is zero.
  const bool nonzero = s.find_first_of("123456789") != std::string::npos;
  if (v < 0.0 && nonzero) s.insert(s.begin(), '-');
  return s;
}

std::string FormatTrimmed(float v, int n) {
  if (v == 0.0f) return "0.";  // negative zero too: no sign on a zero
  // Below 1 the field is exactly as wide as "0." and the decimals, so the leading zero
  // stands; from 1 up the field is minimal. Either way the text is the decimal text.
  // The decimals are counted on the single-precision value before rounding, and the
  // rounding keeps them all: 2.996 gives "3.00", 1.0001 gives "1.00". Read back, the
  // text gives the value rounded to those decimals.
  return DecimalText(v, TrimmedFieldOf(v, n).decimals);
}

std::string FormatFixed(float v, int d) {
  if (v == 0.0f && d <= 0) return "0.";
  std::string s = DecimalText(v == 0.0f ? 0.0f : v, d);
  // Minimal width drops the digit before the point of a magnitude below 1: ".50".
  const std::size_t at = s[0] == '-' ? 1 : 0;
  if (d > 0 && s.compare(at, 2, "0.") == 0) s.erase(at, 1);
  return s;
}

}  // namespace quellon
