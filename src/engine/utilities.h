// Small routines shared across the engine. Every real here is a 32-bit float and the
// order of the operations is the order of evaluation, since results feed comparisons
// with the tolerance 1e-20.
#pragma once

#include "engine/model.h"

namespace quellon {

constexpr float kPi = 3.1415927f;

inline float DegreesToRadians(float x) { return (x * kPi) / 180.0f; }

inline float ShaftArea(const Pile& p) { return p.ShaftDiameter * kPi * p.Length; }
inline float BaseArea(const Pile& p) { return p.BaseDiameter * kPi * p.BaseDiameter * 0.25f; }

// Indentation steps of the XML writer.
inline int IndentMore(int indent) { return indent + 4; }
inline int IndentLess(int indent) { return indent - 4; }

}  // namespace quellon
