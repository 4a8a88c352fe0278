#include "engine/model_checks.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include "engine/engine.h"
#include "engine/notify.h"
#include "engine/utilities.h"
#include "soil/layer_averaging.h"
#include "soil/mindlin_kernels.h"

namespace quellon {

namespace {

constexpr float kZero = 1.0e-20f;  // the engine's test of a real against zero

// Ids of the message table that the text model reader sets for the same faults.
constexpr int kZeroPileLength = 295;
constexpr int kZeroShaftDiameter = 296;
constexpr int kZeroBaseDiameter = 297;
constexpr int kZeroAxialStiffness = 298;
constexpr int kZeroVerticalSoilStiffness = 305;
constexpr int kZeroHorizontalSoilStiffness = 306;
constexpr int kPoissonAboveHalf = 307;
constexpr int kBadGroundType = 308;
constexpr int kBadAngleOfFriction = 312;
constexpr int kBadDelta = 313;
constexpr int kBadRockStrength = 316;

std::string Value(double v) {
  char buf[32];
  std::snprintf(buf, sizeof buf, "%g", v);
  return buf;
}

std::string PileText(int p) { return "pile " + std::to_string(p); }
std::string LayerText(int i) { return "layer " + std::to_string(i); }

int Refuse(Engine& e, const std::string& text, int code = 0) {
  if (code != 0) e.project.ErrorCode = code;
  SendError(e, "Error - " + text);
  return 0;
}

// ---- Numbers that aren't numbers. Every real that the run reads or echoes into its
// reports; the head loads of a pile are only stored, and are left alone. ----

template <class R>
struct Field {
  const char* name;
  float R::*member;
};

constexpr Field<Project> kProjectFields[] = {
    {"Nq", &Project::Nq}, {"Rs", &Project::Rs}, {"Rb", &Project::Rb}, {"Rl", &Project::Rl}, {"Rt", &Project::Rt},
    {"LimitingShaftFriction", &Project::LimitingShaftFriction},
    {"LimitingBearingPressure", &Project::LimitingBearingPressure},
    {"InteractionDistance", &Project::InteractionDistance}};
constexpr Field<Actions> kActionFields[] = {{"Fx", &Actions::Fx}, {"Fy", &Actions::Fy}, {"Fz", &Actions::Fz},
                                            {"Mx", &Actions::Mx}, {"My", &Actions::My}, {"Mz", &Actions::Mz},
                                            {"X", &Actions::X},   {"Y", &Actions::Y}};
constexpr Field<Borehole> kBoreholeFields[] = {{"DepthToRigidLayer", &Borehole::DepthToRigidLayer},
                                               {"Overburden", &Borehole::Overburden}};
constexpr Field<Foundation> kFoundationFields[] = {{"FreeStandingLength", &Foundation::FreeStandingLength}};
constexpr Field<Layer> kLayerFields[] = {
    {"DepthToTop", &Layer::DepthToTop}, {"Ev", &Layer::Ev}, {"dEv", &Layer::dEv}, {"Eh", &Layer::Eh},
    {"dEh", &Layer::dEh}, {"Poisson", &Layer::Poisson}, {"cu", &Layer::cu}, {"dcu", &Layer::dcu},
    {"alpha", &Layer::alpha}, {"WeightDensity", &Layer::WeightDensity}, {"phi", &Layer::phi},
    {"delta", &Layer::delta}, {"Ks", &Layer::Ks}, {"qu", &Layer::qu}, {"k1", &Layer::k1}, {"k2", &Layer::k2},
    {"k3", &Layer::k3}, {"k4", &Layer::k4}, {"k5", &Layer::k5}, {"DirectSkinFriction", &Layer::DirectSkinFriction},
    {"DirectEndBearing", &Layer::DirectEndBearing}, {"DirectLateral", &Layer::DirectLateral},
    {"MaxSkinFriction", &Layer::MaxSkinFriction}, {"MaxBearingPressure", &Layer::MaxBearingPressure}};
// SoilEntryX and SoilEntryY are worked out from the rest, and overflow for a rake near 90
// degrees under a free-standing length.
constexpr Field<Pile> kPileFields[] = {
    {"Length", &Pile::Length}, {"ShaftDiameter", &Pile::ShaftDiameter},
    {"InternalDiameter", &Pile::InternalDiameter}, {"BaseDiameter", &Pile::BaseDiameter},
    {"RakeX", &Pile::RakeX}, {"RakeY", &Pile::RakeY}, {"X", &Pile::X}, {"Y", &Pile::Y}, {"Z", &Pile::Z},
    {"ReinforcedLength", &Pile::ReinforcedLength}, {"EA", &Pile::EA}, {"EIx", &Pile::EIx}, {"EIy", &Pile::EIy},
    {"GJ", &Pile::GJ}, {"UnreinforcedEA", &Pile::UnreinforcedEA}, {"UnreinforcedEIx", &Pile::UnreinforcedEIx},
    {"UnreinforcedEIy", &Pile::UnreinforcedEIy}, {"UnreinforcedGJ", &Pile::UnreinforcedGJ},
    {"SoilEntryX", &Pile::SoilEntryX}, {"SoilEntryY", &Pile::SoilEntryY}};

template <class R, std::size_t N>
int CheckFinite(Engine& e, const R& record, const Field<R> (&fields)[N], const std::string& subject) {
  for (const Field<R>& f : fields) {
    const float v = record.*(f.member);
    if (!std::isfinite(v)) return Refuse(e, subject + ": " + f.name + " is not a finite number (" + Value(v) + ")");
  }
  return 1;
}

int CheckFiniteValues(Engine& e) {
  const Foundation& f = e.foundation;
  const Borehole& b = e.borehole;
  if (!CheckFinite(e, e.project, kProjectFields, "the project") ||
      !CheckFinite(e, e.actions, kActionFields, "the loads on the cap") ||
      !CheckFinite(e, b, kBoreholeFields, "the borehole") || !CheckFinite(e, f, kFoundationFields, "the foundation"))
    return 0;
  for (int i = 1; i <= b.NumberOfLayers; ++i)
    if (!CheckFinite(e, b.Layers(i), kLayerFields, LayerText(i))) return 0;
  for (int p = 1; p <= f.NumberOfPiles; ++p)
    if (!CheckFinite(e, f.Piles(p), kPileFields, PileText(p))) return 0;
  // What the geometry made of them: a sum of huge coordinates or moments can overflow.
  bool derived = std::isfinite(f.CentreOfRotationX) && std::isfinite(f.CentreOfRotationY);
  for (int i = 1; i <= e.ws.CapLoadInc.size(); ++i) derived = derived && std::isfinite(e.ws.CapLoadInc(i));
  if (!derived) return Refuse(e, "the pile positions or the loads on the cap are too large to be worked with");
  return 1;
}

// ---- The model as a whole ----

int CheckCounts(Engine& e) {
  if (e.foundation.NumberOfPiles < 1) return Refuse(e, "the model has no piles");
  if (e.foundation.NumberOfElements < 1)
    return Refuse(e, "the piles have " + std::to_string(e.foundation.NumberOfElements) +
                         " shaft elements: each pile needs one at least");
  if (e.borehole.NumberOfLayers < 1) return Refuse(e, "the borehole has no layers: there is no ground to carry the piles");
  return 1;
}

int CheckProjectValues(Engine& e) {
  const float F = e.foundation.FreeStandingLength;
  if (F < 0.0f) return Refuse(e, "the free-standing length is negative (" + Value(F) + " m)");
  const float D = e.borehole.DepthToRigidLayer;
  if (std::fabs(D) > kZero && D < 0.0f)
    return Refuse(e, "the depth to the rigid layer is negative (" + Value(D) +
                         " m): the rigid layer would lie above the ground that the piles enter");
  if (e.project.NonLinear == 0) return 1;
  // The softening factor (1 - |s| R / |l|)^2 falls to 0, and the soil loses all its
  // stiffness, at |s| = |l| / R: with R of 1 or more, at or below the limit.
  const Project& pr = e.project;
  const std::pair<const char*, float> constants[] = {
      {"shaft (Rs)", pr.Rs}, {"base (Rb)", pr.Rb}, {"lateral (Rl)", pr.Rl}, {"torsion (Rt)", pr.Rt}};
  for (const auto& [name, R] : constants) {
    if (R >= 1.0f)
      return Refuse(e, std::string("the hyperbolic constant of the ") + name + " is 1 or more (" + Value(R) +
                           "): the soil would lose all its stiffness before its limiting stress");
  }
  return 1;
}

int CheckLayers(Engine& e) {
  const Borehole& b = e.borehole;
  for (int i = 1; i <= b.NumberOfLayers; ++i) {
    const Layer& l = b.Layers(i);
    if (i > 1 && l.DepthToTop < b.Layers(i - 1).DepthToTop)
      return Refuse(e, LayerText(i) + ": its top (Z = " + Value(l.DepthToTop) + " m) lies above the top of layer " +
                           std::to_string(i - 1) + " (Z = " + Value(b.Layers(i - 1).DepthToTop) +
                           " m): layers stand in order of increasing depth");
    // Mindlin's factor (1 + nu) / (1 - nu) breaks down at 1, and a ratio at or below -1
    // gives no positive shear modulus; above 0.5 the bulk modulus would be negative.
    if (l.Poisson > 0.5f)
      return Refuse(e, LayerText(i) + ": its Poisson's ratio is above 0.5 (" + Value(l.Poisson) + ")",
                    kPoissonAboveHalf);
    if (l.Poisson <= -1.0f)
      return Refuse(e, LayerText(i) + ": its Poisson's ratio is -1 or less (" + Value(l.Poisson) + ")");
  }
  return 1;
}

// ---- Each pile ----

// The section stiffnesses that the elements of the pile take: an element whose centre
// lies within the reinforced length takes EA to GJ, any other the unreinforced values,
// and the toe row stands at the pile's length. Only the sections in use must be
// positive, since a host that reinforces the whole pile may leave the other unset.
int CheckSections(Engine& e, const Pile& pile, int p) {
  const int n = e.foundation.NumberOfElements;
  bool reinforced = false, unreinforced = false;
  SteppedCentres centre(e.foundation.Frame(p).h);
  for (int k = 1; k <= n + 1; ++k) {
    const float at = k == n + 1 ? pile.Length : centre();
    (at <= pile.ReinforcedLength ? reinforced : unreinforced) = true;
  }
  const char* names[4] = {"axial stiffness EA", "flexural stiffness EIx", "flexural stiffness EIy",
                          "torsional stiffness GJ"};
  const float upper[4] = {pile.EA, pile.EIx, pile.EIy, pile.GJ};
  const float lower[4] = {pile.UnreinforcedEA, pile.UnreinforcedEIx, pile.UnreinforcedEIy, pile.UnreinforcedGJ};
  for (int s = 0; s < 4; ++s) {
    if (reinforced && !(upper[s] > 0.0f))
      return Refuse(e, PileText(p) + ": the " + names[s] + " of its reinforced section is 0 or less (" +
                           Value(upper[s]) + ")",
                    kZeroAxialStiffness + s);
    if (unreinforced && !(lower[s] > 0.0f))
      return Refuse(e, PileText(p) + ": the " + names[s] + " below its reinforced length is 0 or less (" +
                           Value(lower[s]) + ")",
                    kZeroAxialStiffness + s);
  }
  return 1;
}

int CheckPile(Engine& e, int p) {
  const Pile& pile = e.foundation.Piles(p);
  const std::string who = PileText(p);
  if (!(pile.Length > 0.0f)) return Refuse(e, who + ": its length is 0 or less (" + Value(pile.Length) + " m)", kZeroPileLength);
  if (!(pile.ShaftDiameter > 0.0f))
    return Refuse(e, who + ": its shaft diameter is 0 or less (" + Value(pile.ShaftDiameter) + " m)",
                  kZeroShaftDiameter);
  if (!(pile.BaseDiameter > 0.0f))
    return Refuse(e, who + ": its base diameter is 0 or less (" + Value(pile.BaseDiameter) + " m)",
                  kZeroBaseDiameter);
  // At 90 degrees the pile lies flat: its elements have no depth and the cap's lever arms
  // (tan of the rake) no value.
  for (const auto& [axis, rake] : {std::pair{"X", pile.RakeX}, std::pair{"Y", pile.RakeY}}) {
    if (!(std::fabs(rake) < 90.0f))
      return Refuse(e, who + ": its rake about " + axis + " (" + Value(rake) +
                           " degrees) must lie between -90 and 90 degrees");
  }
  if (!CheckSections(e, pile, p)) return 0;

  // The closed forms of an element on itself take ln((a + r)/(r - a)) with r the hypot
  // of half the element length a and the radius b: for an element thousands of times
  // longer than wide, r rounds to a in single precision.
  const int n = e.foundation.NumberOfElements;
  const float a = pile.Length / static_cast<float>(2 * n);
  const float b = pile.ShaftDiameter * 0.5f;
  if (!std::isfinite(AxialSelfIntegral(a, b, 0.0f, 1.0f)) || !std::isfinite(TransverseSelfIntegral(a, b, 0.0f, 1.0f)))
    return Refuse(e, who + ": its elements are too slender to be integrated (" + Value(2.0f * a) +
                         " m long for a diameter of " + Value(pile.ShaftDiameter) + " m): use more elements");

  // Mindlin's solution is for loads below the free surface Z = 0: its image terms divide
  // by z + c, which a point at or above the surface makes 0 or negative.
  const float z = pile.SoilEntryZ;
  if (z < 0.0f)
    return Refuse(e, who + ": it enters the ground at Z = " + Value(z) +
                         " m, above the free surface of the ground at Z = 0");
  const float top = e.borehole.Layers(1).DepthToTop;
  if (z < top)
    return Refuse(e, who + ": it enters the ground at Z = " + Value(z) + " m, above the top of the first layer (Z = " +
                         Value(top) + " m), where there is no soil");
  return 1;
}

// ---- The ground that the piles reach ----

// Calls f(i, lo, hi, open) for each layer i that holds depths of (top, bottom]: lo and hi
// bound the stretch inside it, and open says that lo is the excluded top of the range.
template <class F>
void ForEachStretch(const Borehole& b, float top, float bottom, F&& f) {
  const int count = b.NumberOfLayers;
  for (int i = 1; i <= count; ++i) {
    const Layer& l = b.Layers(i);
    const float below = i == count ? bottom : b.Layers(i + 1).DepthToTop;  // the next layer's top
    if (below <= l.DepthToTop || below <= top || l.DepthToTop > bottom) continue;
    f(i, std::max(top, l.DepthToTop), std::min(bottom, below), !(l.DepthToTop > top));
  }
}

// The modulus V + (z - top) dV grows linearly through a layer, so over a stretch it is
// least at one end. At the open top of a range (the soil entry level, where no point of a
// pile lies) a modulus of 0 that grows below, a ground stiffening from nothing at the
// surface, is sound.
template <class V, class G>
int CheckModulus(Engine& e, float top, float bottom, int p, const char* name, int code, V value, G gradient) {
  const Borehole& b = e.borehole;
  int fault = 0;
  float at = 0.0f, worst = 0.0f;
  ForEachStretch(b, top, bottom, [&](int i, float lo, float hi, bool open) {
    if (fault != 0) return;
    const Layer& l = b.Layers(i);
    const float v_lo = (lo - l.DepthToTop) * gradient(l) + value(l);
    const float v_hi = (hi - l.DepthToTop) * gradient(l) + value(l);
    const bool lo_bad = open ? (v_lo < 0.0f || (v_lo == 0.0f && !(gradient(l) > 0.0f))) : !(v_lo > 0.0f);
    if (lo_bad || !(v_hi > 0.0f)) {
      fault = i;
      at = lo_bad ? lo : hi;
      worst = lo_bad ? v_lo : v_hi;
    }
  });
  if (fault == 0) return 1;
  return Refuse(e, LayerText(fault) + ": the " + name + " soil modulus is 0 or less (" + Value(worst) +
                       " kPa) at Z = " + Value(at) + " m, a depth that " + PileText(p) + " reaches",
                code);
}

float Ev(const Layer& l) { return l.Ev; }
float dEv(const Layer& l) { return l.dEv; }
float Eh(const Layer& l) { return l.Eh; }
float dEh(const Layer& l) { return l.dEh; }

// The soil matrices place every pile's elements below the soil entry level z0 of the
// first pile; the transverse blocks step down cos(rake) h per element, the axial ones
// cos(RakeX) cos(RakeY) h, and the smoothed treatment reads four rows below the tip.
int CheckGroundAlongPiles(Engine& e) {
  const Foundation& f = e.foundation;
  const Borehole& b = e.borehole;
  const float z0 = f.Piles(1).SoilEntryZ;
  float deepest = 0.0f;  // vertical reach of the longest pile
  for (int p = 1; p <= f.NumberOfPiles; ++p) {
    const Pile& pile = f.Piles(p);
    const PileFrame& fr = f.Frame(p);
    const float ca = fr.ca, ce = fr.ce;
    const float vertical = fr.vertical;
    const float bottom = z0 + std::max(ca, ce) * pile.Length;
    const float rows_below = 3.5f * vertical / static_cast<float>(f.NumberOfElements);
    const float bottom_v = b.LayerAveraging == 1 ? bottom : std::max(bottom, z0 + vertical + rows_below);
    deepest = std::max(deepest, std::max(ca, ce) * pile.Length);
    if (!CheckModulus(e, z0, bottom_v, p, "vertical", kZeroVerticalSoilStiffness, Ev, dEv) ||
        !CheckModulus(e, z0, bottom, p, "horizontal", kZeroHorizontalSoilStiffness, Eh, dEh))
      return 0;
  }
  // The torsion between two near piles of a group under torque (under any load in the
  // corrected mechanics) runs down from the soil entry level of the field pile itself.
  if ((std::fabs(e.actions.Mz) > kZero || e.corrected_mechanics) && f.NumberOfPiles > 1) {
    for (int p = 1; p <= f.NumberOfPiles; ++p) {
      const float zp = f.Piles(p).SoilEntryZ;
      if (zp != z0 && !CheckModulus(e, zp, zp + deepest, p, "vertical", kZeroVerticalSoilStiffness, Ev, dEv)) return 0;
    }
  }
  // A rigid layer takes its displacement at its own level, with the moduli found there.
  const float D = b.DepthToRigidLayer;
  if (std::fabs(D) > kZero) {
    const float z = D + z0;
    const bool vertical_bad = b.LayerAveraging == 1 && !(VerticalModulusAt(b, z) > 0.0f);
    if (vertical_bad || !(HorizontalModulusAt(b, z) > 0.0f)) {
      int layer = 0;
      for (int i = 1; i <= b.NumberOfLayers; ++i)
        if (b.Layers(i).DepthToTop <= z) layer = i;
      return Refuse(e, (layer > 0 ? LayerText(layer) : std::string("the borehole")) + ": the " +
                           (vertical_bad ? "vertical" : "horizontal") +
                           " soil modulus is 0 or less at the rigid layer (Z = " + Value(z) + " m)",
                    vertical_bad ? kZeroVerticalSoilStiffness : kZeroHorizontalSoilStiffness);
    }
  }
  return 1;
}

// The strength of a layer that a limiting stress is worked out in: the shaft elements
// below the first pile's soil entry level, the base below the pile's own.
int CheckStrength(Engine& e, int i) {
  const Layer& l = e.borehole.Layers(i);
  const std::string who = LayerText(i);
  switch (l.GroundType) {
    case kCoarseSoil:
      // The passive coefficient (1 + sin phi) / (1 - sin phi) and tan phi have no value
      // at 90 degrees.
      if (!(std::fabs(l.phi) < 90.0f))
        return Refuse(e, who + ": its angle of shearing resistance (" + Value(l.phi) +
                             " degrees) must lie below 90 degrees",
                      kBadAngleOfFriction);
      if (!(std::fabs(l.delta) < 90.0f))
        return Refuse(e, who + ": its interface friction angle delta (" + Value(l.delta) +
                             " degrees) must lie below 90 degrees",
                      kBadDelta);
      return 1;
    case kRock:
      // (qu / 100)^k has no value for a negative strength, and none or 1 for 0.
      if (!(l.qu > 0.0f))
        return Refuse(e, who + ": the unconfined strength of its rock is 0 or less (" + Value(l.qu) +
                             " kPa), which its power laws can't take",
                      kBadRockStrength);
      return 1;
    case kFineSoil:
    case kDirectValues:
      return 1;
    default:
      return Refuse(e, who + ": its ground type (" + std::to_string(l.GroundType) +
                           ") is none of 1 to 4, so its strength is unknown",
                    kBadGroundType);
  }
}

int CheckStrengthsAlongPiles(Engine& e) {
  const Foundation& f = e.foundation;
  const Borehole& b = e.borehole;
  std::vector<char> checked(static_cast<std::size_t>(b.NumberOfLayers) + 1, 0);
  int result = 1;
  auto check = [&](int i) {
    if (result == 0 || checked[static_cast<std::size_t>(i)]) return;
    checked[static_cast<std::size_t>(i)] = 1;
    result = CheckStrength(e, i);
  };
  const float z0 = f.Piles(1).SoilEntryZ;
  for (int p = 1; p <= f.NumberOfPiles && result != 0; ++p) {
    const Pile& pile = f.Piles(p);
    const float Lz = f.Frame(p).vertical;
    ForEachStretch(b, z0, z0 + Lz, [&](int i, float, float, bool) { check(i); });
    const float base = Lz + pile.SoilEntryZ;
    int at = 0;
    for (int i = 1; i <= b.NumberOfLayers; ++i)
      if (b.Layers(i).DepthToTop <= base) at = i;
    if (at > 0) check(at);
  }
  return result;
}

}  // namespace

int CheckModel(Engine& e) {
  if (!CheckCounts(e) || !CheckFiniteValues(e) || !CheckProjectValues(e) || !CheckLayers(e)) return 0;
  for (int p = 1; p <= e.foundation.NumberOfPiles; ++p)
    if (!CheckPile(e, p)) return 0;
  if (!CheckGroundAlongPiles(e)) return 0;
  if (e.project.NonLinear != 0 && !CheckStrengthsAlongPiles(e)) return 0;
  return 1;
}

}  // namespace quellon
