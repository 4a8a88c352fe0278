// The report and XML number forms take their digits from std::to_chars; the C library's
// printf is the reference they must match character for character, on random bit
// patterns of floats and doubles (any exponent, subnormals, NaN and infinities) and on
// the values where rounding is delicate: ties, carries into the next power of ten,
// negative zero, values that round to zero.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "files/number_forms.h"
#include "files/text_model_numbers.h"

namespace quellon {
namespace {

std::string Printf(const char* format, int d, double v) {
  char buf[1024];
  std::snprintf(buf, sizeof buf, format, d, v);
  return buf;
}

// printf's text without the sign of a value that shows no non-zero digit.
std::string UnsignedZero(std::string s) {
  if (!s.empty() && s[0] == '-' && s.find_first_of("123456789") == std::string::npos) s.erase(0, 1);
  return s;
}

std::vector<double> Values() {
  std::vector<double> v = {0.5,    1.5,     2.5,      0.125,   0.375,    -0.125, 0.05,   9.5,     99.95f,
                           9.995,  999.5,   -0.0005,  -0.0,    1e-45f,   1e-320, 1e300,  -3e38f,  1e22,
                           2e-7,   0.99999, 9.9996f,  123456.5, 4.35,    -1.005, 1e-5f,  65504.0, 0.015625, 0.0009765625, 1.5e-9f};
  v.push_back(std::numeric_limits<double>::infinity());
  v.push_back(-std::numeric_limits<float>::infinity());
  v.push_back(std::nan(""));
  v.push_back(-std::nan(""));
  std::mt19937_64 rng(20261123);
  for (int i = 0; i < 4000; ++i) {
    const std::uint64_t bits = rng();
    const std::uint32_t fbits = static_cast<std::uint32_t>(bits >> 32);
    float f;
    std::memcpy(&f, &fbits, sizeof f);
    v.push_back(f);
    double d;
    std::memcpy(&d, &bits, sizeof d);
    v.push_back(d);
    // Floats of everyday magnitudes, where the few decimals of the reports cut digits.
    v.push_back(std::ldexp(static_cast<double>(fbits & 0xffffff), static_cast<int>(bits % 48) - 40));
  }
  return v;
}

TEST(NumberDigits, MatchPrintfOnRandomAndDelicateValues) {
  for (const double v : Values()) {
    for (const int d : {0, 1, 2, 3, 4, 6, 7, 9, 17}) {
      const bool finite = std::isfinite(v);
      if (finite && v != 0.0) {
        // A field wider than any such text keeps it whole, as printf prints it.
        if (std::fabs(v) < 1e30) {
          EXPECT_EQ(FormatFix(v, 60, d), Printf("%#60.*f", d, v)) << v << " " << d;
        }
        EXPECT_EQ(FormatSci(v, 0, d), Printf("%#.*E", d, v)) << v << " " << d;
        // The point-first form in minimal width: "0.", printf's significant digits, the
        // exponent one up.
        const std::string sci = Printf("%.*E", d, std::fabs(v));
        std::string digits = sci.substr(0, sci.find('E'));
        if (digits.size() > 1) digits.erase(1, 1);
        const int exponent = std::atoi(sci.c_str() + sci.find('E') + 1) + 1;
        char tail[16];
        std::snprintf(tail, sizeof tail, "E%c%02d", exponent < 0 ? '-' : '+', std::abs(exponent));
        EXPECT_EQ(FormatFrac(v, 0, d + 1), (v < 0 ? "-0." : "0.") + digits + tail) << v << " " << d;
      }
      // Decimal text: ties are nudged away from zero for up to 6 decimals, so those
      // are compared off the ties only; a value that rounds to zero has no sign.
      const double scaled = std::fabs(v) * std::pow(10.0, d);
      if (d > 6 || !finite || scaled - std::floor(scaled) != 0.5) {
        EXPECT_EQ(DecimalText(v, d), UnsignedZero(Printf("%#.*f", d, finite ? v : std::fabs(v)))) << v << " " << d;
      }
    }
  }
}

}  // namespace
}  // namespace quellon
