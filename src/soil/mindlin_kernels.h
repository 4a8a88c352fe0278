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
#include <cstring>

#if defined(__SSE__)
#include <xmmintrin.h>
#endif

#include "engine/pile_frame.h"  // Trig
#include "engine/utilities.h"

namespace quellon {

// A point of the ground: x, y across, z the depth below the surface.
struct Point3 {
  float x, y, z;
};

// Four floats handled at once. The ring sums of the torsion blocks evaluate Mindlin's
// solution at four ring points together; the terms below are written once, for float
// and for Float4 alike, so each lane performs the same correctly rounded operations in
// the same order as the scalar form and gives the same bits.
typedef float Float4 __attribute__((vector_size(16)));

inline float Sqrt(float v) { return std::sqrt(v); }
inline Float4 Sqrt(Float4 v) {
#if defined(__SSE__)
  return static_cast<Float4>(_mm_sqrt_ps(static_cast<__m128>(v)));
#else
  return Float4{std::sqrt(v[0]), std::sqrt(v[1]), std::sqrt(v[2]), std::sqrt(v[3])};
#endif
}
inline Float4 Splat(float x) { return Float4{x, x, x, x}; }
inline Float4 Load4(const float* p) {
  Float4 v;
  std::memcpy(&v, p, sizeof v);
  return v;
}
inline void Store4(float* p, Float4 v) { std::memcpy(p, &v, sizeof v); }

// The seven influences of one point load, without A or W. The first letter is the
// direction of the displacement, the second that of the load.
template <class V>
struct InfluencesOf {
  V Ixx, Ixz, Izx, Iyy, Iyz, Izy, Izz;
};
using Influences = InfluencesOf<float>;

namespace mindlin_detail {

// The terms of Mindlin's solution, each in its own named part.
template <class V>
struct TermsOf {
  V dx, dy;
  V Dhx, Dhy, Dv;  // direct terms: b/R1 + u^2/R1^3, b/R1 + (z - c)^2/R1^3
  V Hhx, Hhy, Hv;  // image terms
  V Kd, Ki, Q, T;  // coupling terms
};
using Terms = TermsOf<float>;

// Image terms alone; valid when field and source coincide.
struct ImageTerms {
  float dx, dy;
  float Hhx, Hhy, Hv;
  float Ki;
};

template <class V>
struct Common {
  V dx, dy, zmc, zpc;
  V R2, R2sq, R2cube;
  V b, k1, k2, S;
};

// Field point (x, y, z), source point (xs, ys, c).
template <class V>
inline Common<V> CommonTerms(V nu, V x, V y, V z, V xs, V ys, V c) {
  Common<V> m;
  m.dx = x - xs;
  m.dy = y - ys;
  m.zmc = z - c;
  m.zpc = z + c;
  m.R2 = Sqrt(m.dx * m.dx + m.dy * m.dy + m.zpc * m.zpc);
  m.R2sq = m.R2 * m.R2;
  m.R2cube = m.R2sq * m.R2;
  m.b = 3.0f - 4.0f * nu;
  m.k1 = 4.0f * (1.0f - nu) * (1.0f - 2.0f * nu);
  m.k2 = 8.0f * ((1.0f - nu) * (1.0f - nu)) - m.b;
  m.S = 1.0f / (m.zpc + m.R2);
  return m;
}

// Hh(u) = 1/R2 + (b u^2 + 2 c z (1 - 3 u^2/R2^2))/R2^3 + k1 S (1 - u^2 S/R2)
template <class V>
inline V Hh(const Common<V>& m, V u, V z, V c) {
  const V u2 = u * u;
  return 1.0f / m.R2 + (m.b * u2 + 2.0f * c * z * (1.0f - 3.0f * u2 / m.R2sq)) / m.R2cube +
         m.k1 * m.S * (1.0f - u2 * m.S / m.R2);
}

// Hv = (k2 + 6 c z (z + c)^2/R2^4)/R2 + (b (z + c)^2 - 2 c z)/R2^3
template <class V>
inline V Hv(const Common<V>& m, V z, V c) {
  const V zpc2 = m.zpc * m.zpc;
  return (m.k2 + 6.0f * c * z * zpc2 / (m.R2sq * m.R2sq)) / m.R2 + (m.b * zpc2 - 2.0f * c * z) / m.R2cube;
}

inline ImageTerms Image(float nu, const Point3& f, const Point3& s) {
  const Common<float> m = CommonTerms(nu, f.x, f.y, f.z, s.x, s.y, s.z);
  ImageTerms t;
  t.dx = m.dx;
  t.dy = m.dy;
  t.Hhx = Hh(m, m.dx, f.z, s.z);
  t.Hhy = Hh(m, m.dy, f.z, s.z);
  t.Hv = Hv(m, f.z, s.z);
  t.Ki = m.zmc * m.b / m.R2cube;
  return t;
}

template <class V>
inline TermsOf<V> AllTerms(V nu, V x, V y, V z, V xs, V ys, V c) {
  const Common<V> m = CommonTerms(nu, x, y, z, xs, ys, c);
  const V R1 = Sqrt(m.dx * m.dx + m.dy * m.dy + m.zmc * m.zmc);
  const V R1cube = R1 * R1 * R1;
  TermsOf<V> t;
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

inline Terms All(float nu, const Point3& f, const Point3& s) {
  return AllTerms(nu, f.x, f.y, f.z, s.x, s.y, s.z);
}

}  // namespace mindlin_detail

template <class V>
inline InfluencesOf<V> InfluencesFromTerms(const mindlin_detail::TermsOf<V>& t) {
  InfluencesOf<V> I;
  I.Ixx = t.Hhx + t.Dhx;
  I.Ixz = t.dx * (t.Kd - t.Q + t.T);
  I.Izx = t.dx * (t.Kd + t.Q - t.T);
  I.Iyy = t.Hhy + t.Dhy;
  I.Iyz = t.dy * (t.Kd - t.Q + t.T);
  I.Izy = t.dy * (t.Kd + t.Q - t.T);
  I.Izz = t.Hv + t.Dv;
  return I;
}

// The seven influences at field point f of a point load at source point s.
inline Influences MindlinInfluences(float nu, const Point3& f, const Point3& s) {
  return InfluencesFromTerms(mindlin_detail::All(nu, f, s));
}

// Displacement along the axis of a pile raked by a about X and e about Y, from a unit
// traction along the same axis. Load and displacement are both projected on the axis,
// so the coupling terms Q and T cancel and only Kd remains.
inline float MindlinAxial(float A, float nu, const Point3& f, const Point3& s, float W, Trig a, Trig e) {
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
inline float MindlinAxialImage(float A, float nu, const Point3& f, const Point3& s, float W, Trig a,
                               Trig e) {
  const mindlin_detail::ImageTerms t = mindlin_detail::Image(nu, f, s);
  return A * W *
         (-(2.0f * t.dx * a.s * a.c + 2.0f * t.dy * e.s * e.c) * t.Ki + t.Hhx * (a.s * a.s) +
          t.Hhy * (e.s * e.s) + t.Hv * (a.c * a.c) * (e.c * e.c));
}

// Displacement normal to a pile lying in the XZ plane, t being its rake plus a right
// angle, from a unit traction in the same direction.
inline float MindlinTransverse(float A, float nu, const Point3& f, const Point3& s, float W, Trig t) {
  const mindlin_detail::Terms m = mindlin_detail::All(nu, f, s);
  const float Ixx = m.Hhx + m.Dhx;
  const float Izz = m.Hv + m.Dv;
  return A * W * ((Ixx * t.s - 2.0f * m.dx * m.Kd * t.c) * t.s + Izz * (t.c * t.c));
}

inline float MindlinTransverseImage(float A, float nu, const Point3& f, const Point3& s, float W,
                                    Trig t) {
  const mindlin_detail::ImageTerms m = mindlin_detail::Image(nu, f, s);
  return A * W * (m.Hhx * (t.s * t.s) - 2.0f * m.dx * m.Ki * t.s * t.c + m.Hv * (t.c * t.c));
}

// The X and Y displacement parts of the shear ring of a twisted pile.
// The forms on terms already worked out let a ring sum evaluate Mindlin's solution once
// for both directions of a point, and for four points at a time.
template <class V>
inline V MindlinTorsionX(V A, V W, const mindlin_detail::TermsOf<V>& t, Trig a) {
  const V Ixx = t.Hhx + t.Dhx;
  const V Izz = t.Hv + t.Dv;
  return A * W * ((2.0f * t.dx * t.Kd * a.c + Izz * a.s) * a.s + Ixx * (a.c * a.c));
}
template <class V>
inline V MindlinTorsionY(V A, V W, const mindlin_detail::TermsOf<V>& t, Trig e) {
  const V Iyy = t.Hhy + t.Dhy;
  const V Izz = t.Hv + t.Dv;
  return A * W * ((2.0f * t.dy * t.Kd * e.c + Izz * e.s) * e.s + Iyy * (e.c * e.c));
}
inline float MindlinTorsionX(float A, float nu, const Point3& f, const Point3& s, float W, Trig a) {
  return MindlinTorsionX(A, W, mindlin_detail::All(nu, f, s), a);
}
inline float MindlinTorsionY(float A, float nu, const Point3& f, const Point3& s, float W, Trig e) {
  return MindlinTorsionY(A, W, mindlin_detail::All(nu, f, s), e);
}

// The same kernels with the angles in radians.
inline float MindlinAxial(float A, float nu, const Point3& f, const Point3& s, float W, float a, float e) {
  return MindlinAxial(A, nu, f, s, W, TrigOf(a), TrigOf(e));
}
inline float MindlinAxialImage(float A, float nu, const Point3& f, const Point3& s, float W, float a,
                               float e) {
  return MindlinAxialImage(A, nu, f, s, W, TrigOf(a), TrigOf(e));
}
inline float MindlinTransverse(float A, float nu, const Point3& f, const Point3& s, float W, float t) {
  return MindlinTransverse(A, nu, f, s, W, TrigOf(t));
}
inline float MindlinTransverseImage(float A, float nu, const Point3& f, const Point3& s, float W,
                                    float t) {
  return MindlinTransverseImage(A, nu, f, s, W, TrigOf(t));
}
inline float MindlinTorsionX(float A, float nu, const Point3& f, const Point3& s, float W, float a) {
  return MindlinTorsionX(A, nu, f, s, W, TrigOf(a));
}
inline float MindlinTorsionY(float A, float nu, const Point3& f, const Point3& s, float W, float e) {
  return MindlinTorsionY(A, nu, f, s, W, TrigOf(e));
}

// The three self integrals take the geometry first, then Poisson's ratio nu and the
// modulus factor A.

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
inline float TransverseSelfIntegral(float a, float b, float nu, float A) {
  const float r = std::sqrt(a * a + b * b);
  return (3.0f - 4.0f * nu) * A * 4.0f * (a * std::log((b + r) / a) + b * std::log((r + a) / b));
}

// Direct term b/R1 of the base on itself, integrated over a disc of diameter Db centred
// on the field point.
inline float BaseSelfIntegral(float Db, float nu, float A) { return (3.0f - 4.0f * nu) * kPi * A * Db; }

}  // namespace quellon
