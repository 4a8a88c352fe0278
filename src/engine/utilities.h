// Small routines shared across the engine. Every real here is a 32-bit float and the
// order of the operations is the order of evaluation, since results feed comparisons
// with the tolerance 1e-20.
#pragma once

#include <cmath>

#include "engine/model.h"

namespace quellon {

constexpr float kPi = 3.1415927f;
constexpr float kHalfPi = kPi * 0.5f;  // exact: 1.5707964f

// The engine's test of a real against zero: a magnitude below 1e-20. The forms differ
// for a value that is not a number, which is neither zero nor non-zero, so each call
// site names the form whose answer for such a value it relies on.
constexpr float kZero = 1.0e-20f;
inline bool IsZero(float x) { return std::fabs(x) < kZero; }
inline bool IsNonZero(float x) { return x > kZero || x < -kZero; }
inline bool IsPositive(float x) { return x > kZero; }  // above the zero test
inline bool Same(float a, float b) { return IsZero(a - b); }

inline float DegreesToRadians(float x) { return (x * kPi) / 180.0f; }

inline float ShaftArea(const Pile& p) { return p.ShaftDiameter * kPi * p.Length; }
inline float BaseArea(const Pile& p) { return p.BaseDiameter * kPi * p.BaseDiameter * 0.25f; }

// Indentation steps of the XML writer.
inline int IndentMore(int indent) { return indent + 4; }
inline int IndentLess(int indent) { return indent - 4; }

}  // namespace quellon

#include <cstdio>
#include <string>

namespace quellon {

// The file and engine version: major 3, minor 0x23, shown "3.23" in hexadecimal digits
// and worth 3 * 256 + 0x23 = 803 as a number.
constexpr int kVersionMajor = 3;
constexpr int kVersionMinor = 0x23;
constexpr int kVersionNumber = kVersionMajor * 256 + kVersionMinor;

// "3.23" for (3, 0x23): the major in hexadecimal at minimal width, the minor in two.
inline std::string VersionText(int major, int minor) {
  char buf[32];
  std::snprintf(buf, sizeof buf, "%X.%02X", static_cast<unsigned>(major), static_cast<unsigned>(minor));
  return buf;
}
inline std::string VersionText() { return VersionText(kVersionMajor, kVersionMinor); }

// The ownership lines that head the LOG, the TXT report and the XML output.
inline constexpr const char* kOwnershipLine1 = "QuellonEngine - pile group analysis by the boundary element method";
inline constexpr const char* kOwnershipLine2 = "Copyright (c) 2026 the QuellonEngine developers";

}  // namespace quellon
