#include "files/text_model_numbers.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
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

namespace {
// 10^d for up to 9 decimals; every one is exact in double.
constexpr double kTens[10] = {1.0, 10.0, 100.0, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9};
}  // namespace

void AppendDecimalText(std::string& out, double v, int d) {
  if (d < 0) d = 0;
  double a = std::fabs(v);
  // For the few decimals of these files a float times 10^d is exact in double, so an
  // exact tie is seen as one; nudged up by one unit it rounds away from zero.
  if (d <= 6 && std::isfinite(a)) {
    const double scaled = a * kTens[d];
    if (scaled - std::floor(scaled) == 0.5) a = std::nextafter(a, INFINITY);
  }
  // A float times 10^d, for up to 9 decimals, is exact in double (24 bits of float
  // and at most 21 of 5^d): its nearest integer, ties to even, is the rounding printf
  // makes of the exact value, and its digits are the text, the point d from the end.
  if (d <= 9 && a < 1e15 && static_cast<double>(static_cast<float>(a)) == a) {
    const double scaled = a * kTens[d];
    if (scaled < 9007199254740992.0) {  // 2^53: every integer below it is a double
      const double whole = std::floor(scaled);
      const double fraction = scaled - whole;
      std::uint64_t n = static_cast<std::uint64_t>(whole);
      if (fraction > 0.5 || (fraction == 0.5 && (n & 1u) != 0)) ++n;
      char digits[24];
      const std::size_t len = static_cast<std::size_t>(std::to_chars(digits, digits + sizeof digits, n).ptr - digits);
      const std::size_t decimals = static_cast<std::size_t>(d);
      if (v < 0.0 && n != 0) out.push_back('-');
      if (len > decimals) {
        out.append(digits, len - decimals);
      } else {
        out.push_back('0');
      }
      out.push_back('.');
      if (len < decimals) out.append(decimals - len, '0');
      out.append(digits + (len > decimals ? len - decimals : 0), std::min(len, decimals));
      return;
    }
  }
  // Otherwise the digits come from to_chars, which rounds the exact binary value as
  // printf does in the C locale, without printf's cost; the C library takes over for a
  // text longer than the buffer, which it cuts as it always did.
  char buf[400];
  const char* end = nullptr;
  const std::to_chars_result r = std::to_chars(buf, buf + sizeof buf - 2, a, std::chars_format::fixed, d);
  if (r.ec == std::errc()) {
    char* p = r.ptr;
    // The point stays when there are no decimals: "12.".
    if (d == 0 && std::isfinite(a)) *p++ = '.';
    end = p;
  } else {
    const int n = std::snprintf(buf, sizeof buf, "%#.*f", d, a);
    end = buf + std::min<std::size_t>(n > 0 ? static_cast<std::size_t>(n) : 0, sizeof buf - 1);
  }
  // A value that rounds to zero prints as zero, without a sign: read back it is zero.
  if (v < 0.0) {
    const bool nonzero = std::any_of(static_cast<const char*>(buf), end, [](char c) { return c >= '1' && c <= '9'; });
    if (nonzero) out.push_back('-');
  }
  out.append(buf, static_cast<std::size_t>(end - buf));
}

std::string DecimalText(double v, int d) {
  std::string s;
  AppendDecimalText(s, v, d);
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
