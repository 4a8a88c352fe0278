#include "files/number_forms.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>

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

std::string FormatFix(double v, int w, int d) {
  if (!std::isfinite(v)) return w > 0 ? std::string(static_cast<std::size_t>(w), '*') : std::string("*");
  if (v == 0.0) v = 0.0;  // drops the sign of -0.0
  char buf[512];
  // '#' keeps the point when there are no decimals: "12." rather than "12".
  std::snprintf(buf, sizeof buf, "%#.*f", d, v);
  std::string s(buf);
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

std::string FormatSci(double v, int w, int d) {
  if (!std::isfinite(v)) return w > 0 ? std::string(static_cast<std::size_t>(w), '*') : std::string("*");
  if (v == 0.0) v = 0.0;
  char buf[128];
  // '#' keeps the point when there are no decimals: "1.E+03".
  std::snprintf(buf, sizeof buf, "%#.*E", d, v);
  return Justify(buf, w);
}

std::string FormatFrac(double v, int w, int d) {
  if (!std::isfinite(v)) return w > 0 ? std::string(static_cast<std::size_t>(w), '*') : std::string("*");
  // The form shows significant digits only, so it needs at least one of them.
  if (d < 1) d = 1;
  std::string digits;
  int exponent = 0;
  if (v == 0.0) {
    digits.assign(static_cast<std::size_t>(d), '0');
  } else {
    // d significant digits, as "D.DDDE+xx", read back as mantissa digits and exponent.
    char buf[128];
    std::snprintf(buf, sizeof buf, "%.*E", d - 1, std::fabs(v));
    const char* p = buf;
    for (; *p != 'E'; ++p)
      if (*p != '.') digits.push_back(*p);
    exponent = std::atoi(p + 1) + 1;
  }
  char ebuf[16];
  std::snprintf(ebuf, sizeof ebuf, "E%c%02d", exponent < 0 ? '-' : '+', std::abs(exponent));
  const std::string sign = v < 0 ? "-" : "";
  std::string s = sign + "0." + digits + ebuf;
  if (w > 0 && static_cast<int>(s.size()) > w) s = sign + "." + digits + ebuf;
  return Justify(s, w);
}

}  // namespace quellon
