#include "files/number_forms.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace quellon {

std::string Justify(const std::string& s, int w) {
  if (w <= 0) return s;
  if (static_cast<int>(s.size()) > w) return std::string(static_cast<std::size_t>(w), '*');
  return std::string(static_cast<std::size_t>(w) - s.size(), ' ') + s;
}

std::string FormatInt(long long v, int w) { return Justify(std::to_string(v), w); }

std::string FormatIntPadded(long long v, int w) {
  std::string digits = std::to_string(v < 0 ? -v : v);
  if (static_cast<int>(digits.size()) < w) digits.insert(0, static_cast<std::size_t>(w) - digits.size(), '0');
  // The sign takes a column of its own, so a negative value needs w + 1 of them.
  return Justify(v < 0 ? "-" + digits : digits, w);
}

namespace {

std::string Stars(int w) { return w > 0 ? std::string(static_cast<std::size_t>(w), '*') : std::string("*"); }

// printf's "%#.*f" of a finite v: to_chars rounds the exact binary value as printf
// does in the C locale, at a fraction of its cost. The C library itself takes over for
// a text longer than the buffer, and cuts it as before.
std::string FixedDigits(double v, int d) {
  if (d < 0) d = 6;  // printf's precision when the one given is negative
  char buf[512];
  const std::to_chars_result r = std::to_chars(buf, buf + sizeof buf - 2, v, std::chars_format::fixed, d);
  if (r.ec != std::errc()) {
    std::snprintf(buf, sizeof buf, "%#.*f", d, v);
    return buf;
  }
  char* end = r.ptr;
  if (d <= 0) *end++ = '.';  // '#': "12." rather than "12"
  return std::string(buf, end);
}

// printf's "%.*E" of a finite v into buf (at least 128 bytes), with the point kept when
// there are no decimals if `point` ("1.E+03"); gives the length. to_chars writes
// "1.23e+03", with the same digits and at least two exponent digits.
std::size_t ScientificDigits(char* buf, double v, int d, bool point) {
  if (d < 0) d = 6;
  const std::to_chars_result r = std::to_chars(buf, buf + 120, v, std::chars_format::scientific, d);
  if (r.ec != std::errc()) {
    const int n = std::snprintf(buf, 128, point ? "%#.*E" : "%.*E", d, v);
    return std::min<std::size_t>(n > 0 ? static_cast<std::size_t>(n) : 0, 127);
  }
  char* e = r.ptr - 1;
  while (*e != 'e') --e;  // the exponent is the tail
  *e = 'E';
  std::size_t len = static_cast<std::size_t>(r.ptr - buf);
  if (point && d <= 0) {
    std::memmove(e + 1, e, static_cast<std::size_t>(r.ptr - e));
    *e = '.';
    ++len;
  }
  return len;
}

// text right-justified in w columns, or w asterisks if it is wider; as it is for w = 0.
void AppendJustified(std::string& out, const char* text, std::size_t len, int w) {
  const std::size_t width = static_cast<std::size_t>(w > 0 ? w : 0);
  if (width > 0 && len > width) {
    out.append(width, '*');
    return;
  }
  if (width > len) out.append(width - len, ' ');
  out.append(text, len);
}

}  // namespace

std::string FormatFix(double v, int w, int d) {
  if (!std::isfinite(v)) return Stars(w);
  if (v == 0.0) v = 0.0;  // drops the sign of -0.0
  std::string s = FixedDigits(v, d);
  // The digit before the point of a magnitude below 1 is optional: minimal width drops
  // it, a fixed width keeps it when there is room.
  const bool negative = s[0] == '-';
  const std::size_t zero_at = negative ? 1 : 0;
  const bool leading_zero = s.size() > zero_at + 1 && s[zero_at] == '0' && s[zero_at + 1] == '.';
  if (leading_zero && d > 0) {
    std::string shorter = s;
    shorter.erase(zero_at, 1);
    if (w <= 0 || static_cast<int>(s.size()) > w) return Justify(shorter, w);
  }
  return Justify(s, w);
}

void AppendSci(std::string& out, double v, int w, int d) {
  if (!std::isfinite(v)) {
    out += Stars(w);
    return;
  }
  if (v == 0.0) v = 0.0;
  char buf[128];
  AppendJustified(out, buf, ScientificDigits(buf, v, d, true), w);
}

std::string FormatSci(double v, int w, int d) {
  std::string s;
  AppendSci(s, v, w, d);
  return s;
}

std::string FormatFrac(double v, int w, int d) {
  if (!std::isfinite(v)) return Stars(w);
  // The form shows significant digits only, so it needs at least one of them.
  if (d < 1) d = 1;
  std::string digits;
  int exponent = 0;
  if (v == 0.0) {
    digits.assign(static_cast<std::size_t>(d), '0');
  } else {
    // d significant digits, as "D.DDDE+xx", read back as mantissa digits and exponent.
    char sci[128];
    sci[ScientificDigits(sci, std::fabs(v), d - 1, false)] = '\0';
    std::size_t p = 0;
    for (; sci[p] != 'E'; ++p)
      if (sci[p] != '.') digits.push_back(sci[p]);
    exponent = std::atoi(sci + p + 1) + 1;
  }
  const int magnitude = std::abs(exponent);
  std::string etext = "E";
  etext += exponent < 0 ? '-' : '+';
  if (magnitude < 10) etext += '0';
  etext += std::to_string(magnitude);
  const std::string sign = v < 0 ? "-" : "";
  std::string s = sign + "0." + digits + etext;
  if (w > 0 && static_cast<int>(s.size()) > w) s = sign + "." + digits + etext;
  return Justify(s, w);
}

}  // namespace quellon
