#include "files/text_model_numbers.h"

#include <cmath>

#include "files/number_forms.h"

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

std::string FormatTrimmed(float v, int n) {
  if (v == 0.0f) return "0.";  // negative zero too: no sign on a zero
  const TrimmedField f = TrimmedFieldOf(v, n);
  return FormatFix(v, f.width, f.decimals);
}

std::string FormatFixed(float v, int d) {
  if (v == 0.0f && d == 0) return "0.";
  return FormatFix(v == 0.0f ? 0.0f : v, 0, d);
}

}  // namespace quellon
