// Mindlin's solution for a point load inside an elastic half-space, in the forms in which
// the soil matrices combine it.
//
// Every routine here is a pure inline function of 32-bit floats: no state, no
// allocation, no I/O, so the assembly can call them from any thread in its inner loops.
// The arithmetic runs in float in the order in which the terms are written below; the
// build never contracts a*b + c into one fused operation, so the results do not depend
// on the compiler.
//
// Notation: the field point (x, y, z) is where the displacement is wanted, the source
// point (x', y', c) where the load acts; z and c are depths below the free surface Z = 0.
// A is the factor of the ground (see MindlinFactor), W the area over which the source
// traction acts, so each rotated kernel gives displacement per unit traction.
//
// The direct terms (in R1, the distance between the two points) are singular when the
// points meet; within one pile that case is always taken by the closed-form self
// integrals at the end of this file. The image terms (in R2, the distance to the mirror
// image of the source above the surface) stay bounded as long as z + c > 0.
#pragma once

#include <cmath>

namespace quellon {

struct SoilPoint {
  float x, y, z;
};

// Sine and cosine of an angle, worked out once by the caller of a kernel in a loop.
struct Trig {
  float s, c;
};
inline Trig TrigOf(float angle) { return {std::sin(angle), std::cos(angle)}; }

// The seven influences of one point load, without A or W. The first letter is the
// direction of the displacement, the second that of the load.
struct Influences {
  float Ixx, Ixz, Izx, Iyy, Iyz, Izy, Izz;
};

namespace mindlin_detail {

// The terms of Mindlin's solution, each in its own named part.
struct Terms {
  float dx, dy;
  float Dhx, Dhy, Dv;  // direct terms: b/R1 + u^2/R1^3, b/R1 + (z - c)^2/R1^3
  float Hhx, Hhy, Hv;  // image terms
  float Kd, Ki, Q, T;  // coupling terms
};

// Image terms alone; valid when field and source coincide.
struct ImageTerms {
  float dx, dy;
  float Hhx, Hhy, Hv;
  float Ki;
};

struct Common {
  float dx, dy, zmc, zpc;
  float R2, R2sq, R2cube;
  float b, k1, k2, S;
};

inline Common CommonTerms(float nu, const SoilPoint& f, const SoilPoint& s) {
  Common m;
  m.dx = f.x - s.x;
  m.dy = f.y - s.y;
  m.zmc = f.z - s.z;
  m.zpc = f.z + s.z;
  m.R2 = std::sqrt(m.dx * m.dx + m.dy * m.dy + m.zpc * m.zpc);
  m.R2sq = m.R2 * m.R2;
  m.R2cube = m.R2sq * m.R2;
  m.b = 3.0f - 4.0f * nu;
  m.k1 = 4.0f * (1.0f - nu) * (1.0f - 2.0f * nu);
  m.k2 = 8.0f * ((1.0f - nu) * (1.0f - nu)) - m.b;
  m.S = 1.0f / (m.zpc + m.R2);
  return m;
}

// Hh(u) = 1/R2 + (b u^2 + 2 c z (1 - 3 u^2/R2^2))/R2^3 + k1 S (1 - u^2 S/R2)
inline float Hh(const Common& m, float u, float z, float c) {
  const float u2 = u * u;
  return 1.0f / m.R2 + (m.b * u2 + 2.0f * c * z * (1.0f - 3.0f * u2 / m.R2sq)) / m.R2cube +
         m.k1 * m.S * (1.0f - u2 * m.S / m.R2);
}

// Hv = (k2 + 6 c z (z + c)^2/R2^4)/R2 + (b (z + c)^2 - 2 c z)/R2^3
inline float Hv(const Common& m, float z, float c) {
  const float zpc2 = m.zpc * m.zpc;
  return (m.k2 + 6.0f * c * z * zpc2 / (m.R2sq * m.R2sq)) / m.R2 + (m.b * zpc2 - 2.0f * c * z) / m.R2cube;
}

inline ImageTerms Image(float nu, const SoilPoint& f, const SoilPoint& s) {
  const Common m = CommonTerms(nu, f, s);
  ImageTerms t;
  t.dx = m.dx;
  t.dy = m.dy;
  t.Hhx = Hh(m, m.dx, f.z, s.z);
  t.Hhy = Hh(m, m.dy, f.z, s.z);
  t.Hv = Hv(m, f.z, s.z);
  t.Ki = m.zmc * m.b / m.R2cube;
  return t;
}

inline Terms All(float nu, const SoilPoint& f, const SoilPoint& s) {
  const Common m = CommonTerms(nu, f, s);
  const float z = f.z;
  const float c = s.z;
  const float R1 = std::sqrt(m.dx * m.dx + m.dy * m.dy + m.zmc * m.zmc);
  const float R1cube = R1 * R1 * R1;
  Terms t;
  t.dx = m.dx;
  t.dy = m.dy;
  t.Dhx = m.b / R1 + m.dx * m.dx / R1cube;
  t.Dhy = m.b / R1 + m.dy * m.dy / R1cube;
  t.Dv = m.b / R1 + m.zmc * m.zmc / R1cube;
  t.Hhx = Hh(m, m.dx, z, c);
  t.Hhy = Hh(m, m.dy, z, c);
  t.Hv = Hv(m, z, c);
  t.Kd = m.zmc * (m.b / m.R2cube + 1.0f / R1cube);
  t.Ki = m.zmc * m.b / m.R2cube;
  t.Q = m.k1 * m.S / m.R2;
  t.T = 6.0f * c * z * m.zpc / (m.R2sq * m.R2sq * m.R2);
  return t;
}

}  // namespace mindlin_detail

// The seven influences at field point f of a point load at source point s.
inline Influences MindlinInfluences(float nu, const SoilPoint& f, const SoilPoint& s) {
  const mindlin_detail::Terms t = mindlin_detail::All(nu, f, s);
  Influences I;
  I.Ixx = t.Hhx + t.Dhx;
  I.Ixz = t.dx * (t.Kd - t.Q + t.T);
  I.Izx = t.dx * (t.Kd + t.Q - t.T);
  I.Iyy = t.Hhy + t.Dhy;
  I.Iyz = t.dy * (t.Kd - t.Q + t.T);
  I.Izy = t.dy * (t.Kd + t.Q - t.T);
  I.Izz = t.Hv + t.Dv;
  return I;
}

// Displacement along the axis of a pile raked by a about X and e about Y, from a unit
// traction along the same axis. Load and displacement are both projected on the axis,
// so the coupling terms Q and T cancel and only Kd remains.
inline float MindlinAxial(float A, float nu, const SoilPoint& f, const SoilPoint& s, float W, Trig a, Trig e) {
  const mindlin_detail::Terms t = mindlin_detail::All(nu, f, s);
  const float Ixx = t.Hhx + t.Dhx;
  const float Iyy = t.Hhy + t.Dhy;
  const float Izz = t.Hv + t.Dv;
  return A * W *
         ((Ixx * a.s - 2.0f * t.dx * t.Kd * a.c) * a.s + (Iyy * e.s - 2.0f * t.dy * t.Kd * e.c) * e.s +
          Izz * (a.c * a.c) * (e.c * e.c));
}

// The image part of MindlinAxial: what remains of an element on itself once the
// singular direct terms have been integrated in closed form.
inline float MindlinAxialImage(float A, float nu, const SoilPoint& f, const SoilPoint& s, float W, Trig a,
                               Trig e) {
  const mindlin_detail::ImageTerms t = mindlin_detail::Image(nu, f, s);
  return A * W *
         (-(2.0f * t.dx * a.s * a.c + 2.0f * t.dy * e.s * e.c) * t.Ki + t.Hhx * (a.s * a.s) +
          t.Hhy * (e.s * e.s) + t.Hv * (a.c * a.c) * (e.c * e.c));
}

// Displacement normal to a pile lying in the XZ plane, t being its rake plus a right
// angle, from a unit traction in the same direction.
inline float MindlinTransverse(float A, float nu, const SoilPoint& f, const SoilPoint& s, float W, Trig t) {
  const mindlin_detail::Terms m = mindlin_detail::All(nu, f, s);
  const float Ixx = m.Hhx + m.Dhx;
  const float Izz = m.Hv + m.Dv;
  return A * W * ((Ixx * t.s - 2.0f * m.dx * m.Kd * t.c) * t.s + Izz * (t.c * t.c));
}

inline float MindlinTransverseImage(float A, float nu, const SoilPoint& f, const SoilPoint& s, float W,
                                    Trig t) {
  const mindlin_detail::ImageTerms m = mindlin_detail::Image(nu, f, s);
  return A * W * (m.Hhx * (t.s * t.s) - 2.0f * m.dx * m.Ki * t.s * t.c + m.Hv * (t.c * t.c));
}

// The X and Y displacement parts of the shear ring of a twisted pile.
// The forms on terms already worked out let a ring sum evaluate Mindlin's solution once
// for both directions of a point.
inline float MindlinTorsionX(float A, float W, const mindlin_detail::Terms& t, Trig a) {
  const float Ixx = t.Hhx + t.Dhx;
  const float Izz = t.Hv + t.Dv;
  return A * W * ((2.0f * t.dx * t.Kd * a.c + Izz * a.s) * a.s + Ixx * (a.c * a.c));
}
inline float MindlinTorsionY(float A, float W, const mindlin_detail::Terms& t, Trig e) {
  const float Iyy = t.Hhy + t.Dhy;
  const float Izz = t.Hv + t.Dv;
  return A * W * ((2.0f * t.dy * t.Kd * e.c + Izz * e.s) * e.s + Iyy * (e.c * e.c));
}
inline float MindlinTorsionX(float A, float nu, const SoilPoint& f, const SoilPoint& s, float W, Trig a) {
  return MindlinTorsionX(A, W, mindlin_detail::All(nu, f, s), a);
}
inline float MindlinTorsionY(float A, float nu, const SoilPoint& f, const SoilPoint& s, float W, Trig e) {
  return MindlinTorsionY(A, W, mindlin_detail::All(nu, f, s), e);
}

// The same kernels with the angles in radians.
inline float MindlinAxial(float A, float nu, const SoilPoint& f, const SoilPoint& s, float W, float a, float e) {
  return MindlinAxial(A, nu, f, s, W, TrigOf(a), TrigOf(e));
}
inline float MindlinAxialImage(float A, float nu, const SoilPoint& f, const SoilPoint& s, float W, float a,
                               float e) {
  return MindlinAxialImage(A, nu, f, s, W, TrigOf(a), TrigOf(e));
}
inline float MindlinTransverse(float A, float nu, const SoilPoint& f, const SoilPoint& s, float W, float t) {
  return MindlinTransverse(A, nu, f, s, W, TrigOf(t));
}
inline float MindlinTransverseImage(float A, float nu, const SoilPoint& f, const SoilPoint& s, float W,
                                    float t) {
  return MindlinTransverseImage(A, nu, f, s, W, TrigOf(t));
}
inline float MindlinTorsionX(float A, float nu, const SoilPoint& f, const SoilPoint& s, float W, float a) {
  return MindlinTorsionX(A, nu, f, s, W, TrigOf(a));
}
inline float MindlinTorsionY(float A, float nu, const SoilPoint& f, const SoilPoint& s, float W, float e) {
  return MindlinTorsionY(A, nu, f, s, W, TrigOf(e));
}

// Direct term Dv of a shaft element on itself, for the vertical pile, integrated over a
// cylinder of radius b and height 2a with the field point on the axis at mid-height:
// the height gives 4((1 - nu) ln((a + r)/(r - a)) - a/(2r)), the circumference 2 pi b,
// and the constant 8 pi = 25.132742 carries both.
inline float AxialSelfIntegral(float a, float b, float nu, float A) {
  const float r = std::sqrt(a * a + b * b);
  return 25.132742f * b * A * ((1.0f - nu) * std::log((a + r) / (r - a)) - 0.5f * a / r);
}

// Direct term b/R1 of a shaft element on itself, integrated over the flat rectangle of
// half-sizes a and b centred on the field point (its projected area). The u^2/R1^3 part
// is left out.
inline float TransverseSelfIntegral(float a, float b, float A, float nu) {
  const float r = std::sqrt(a * a + b * b);
  return (3.0f - 4.0f * nu) * A * 4.0f * (a * std::log((b + r) / a) + b * std::log((r + a) / b));
}

// Direct term b/R1 of the base on itself, integrated over a disc of diameter Db centred
// on the field point.
inline float BaseSelfIntegral(float nu, float A, float Db) { return (3.0f - 4.0f * nu) * 3.1415927f * A * Db; }

}  // namespace quellon
