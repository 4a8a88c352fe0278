#include "engine/model_lint.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <utility>

#include "engine/engine.h"
#include "solution/pile_matrix.h"

namespace quellon {

namespace {

constexpr double kPi = 3.14159265358979;

// The warnings are worked out in double: they judge the model, they are not part of
// the solution's single-precision arithmetic.
double Dbl(float v) { return static_cast<double>(v); }

std::string Num(double v) {
  char buf[32];
  std::snprintf(buf, sizeof buf, "%.4g", v);
  return buf;
}

// Findings whose text is the same for several piles become one line naming them all.
class Grouped {
 public:
  void add(int pile, std::string body) {
    for (auto& [piles, text] : items_)
      if (text == body) {
        piles.push_back(pile);
        return;
      }
    items_.push_back({{pile}, std::move(body)});
  }
  void flush(const char* code, std::vector<Diagnostic>& out) {
    for (const auto& [piles, text] : items_) {
      std::string who = piles.size() == 1 ? "pile " : "piles ";
      for (std::size_t i = 0; i < piles.size(); ++i) who += (i > 0 ? ", " : "") + std::to_string(piles[i]);
      out.push_back(Diagnostic{1, code, 0, who + ": " + text});
    }
  }

 private:
  std::vector<std::pair<std::vector<int>, std::string>> items_;
};

void ShortElements(const Engine& e, std::vector<Diagnostic>& out) {
  const int n = e.foundation.NumberOfElements;
  Grouped g;
  for (int p = 1; p <= e.foundation.NumberOfPiles; ++p) {
    const Pile& pile = e.foundation.Piles(p);
    const float h = pile.Length / static_cast<float>(n);
    if (!(h < pile.ShaftDiameter)) continue;
    const int most = static_cast<int>(std::floor(pile.Length / pile.ShaftDiameter));
    std::string text = "its " + std::to_string(n) + " elements are " + Num(h) + " m long, shorter than its diameter of " +
                       Num(pile.ShaftDiameter) +
                       " m: the point loads on the axis over-count each other and the shaft stresses alternate in "
                       "sign from element to element; ";
    text += most >= 1 ? "at most " + std::to_string(most) + " element" + (most > 1 ? "s keep" : " keeps") +
                            " them at or above the diameter"
                      : "the pile is shorter than its diameter";
    g.add(p, text);
  }
  g.flush("short-elements", out);
}

// Modulus implied by a section stiffness over the geometry of the shaft, in GPa.
struct SectionShape {
  double area, inertia, polar;
};

SectionShape ShapeOf(const Pile& pile) {
  const double D = Dbl(pile.ShaftDiameter);
  const double d = pile.InternalDiameter > 0.0f && pile.InternalDiameter < pile.ShaftDiameter ? Dbl(pile.InternalDiameter) : 0.0;
  const double D2 = D * D - d * d;
  const double D4 = D * D * D * D - d * d * d * d;
  return {kPi / 4.0 * D2, kPi / 64.0 * D4, kPi / 32.0 * D4};
}

std::string SectionFinding(const Pile& pile, const char* which, const float s[4]) {
  const SectionShape shape = ShapeOf(pile);
  const double kpa_to_gpa = 1e-6;
  const double E_ea = Dbl(s[0]) / shape.area * kpa_to_gpa;
  const double E_ix = Dbl(s[1]) / shape.inertia * kpa_to_gpa;
  const double E_iy = Dbl(s[2]) / shape.inertia * kpa_to_gpa;
  const double G_j = Dbl(s[3]) / shape.polar * kpa_to_gpa;
  const std::string section = std::string(which) + " (" + Num(pile.ShaftDiameter) + " m" +
                              (pile.InternalDiameter > 0.0f ? ", hollow" : "") + ")";
  const std::pair<const char*, double> moduli[] = {{"EA", E_ea}, {"EIx", E_ix}, {"EIy", E_iy}};
  const char* units[] = {"MN", "MNm^2", "MNm^2"};
  for (int i = 0; i < 3; ++i) {
    const double E = moduli[i].second;
    if (E < 1.0 || E > 500.0)
      return std::string("the ") + moduli[i].first + " of " + Num(Dbl(s[i]) / 1000.0) + " " + units[i] + " of its " + section +
             " implies a modulus of " + Num(E) +
             " GPa, outside 1 to 500 GPa: most likely a unit slip (kN for MN, or kNm^2 for MNm^2)";
  }
  if (G_j < 0.4 || G_j > 200.0)
    return "the GJ of " + Num(Dbl(s[3]) / 1000.0) + " MNm^2 of its " + section + " implies a shear modulus of " + Num(G_j) +
           " GPa, outside 0.4 to 200 GPa: most likely a unit slip";
  const double ratio = std::max(E_ix, E_iy) / E_ea;
  const double ratio_low = std::min(E_ix, E_iy) / E_ea;
  if (ratio > 10.0 || ratio_low < 0.1)
    return "its " + section + " implies a modulus of " + Num(E_ea) + " GPa from EA but " + Num(E_ix) + " and " +
           Num(E_iy) + " GPa from EIx and EIy: EA and EI do not fit one section of this diameter";
  return {};
}

void SectionStiffness(const Engine& e, std::vector<Diagnostic>& out) {
  Grouped g;
  for (int p = 1; p <= e.foundation.NumberOfPiles; ++p) {
    const Pile& pile = e.foundation.Piles(p);
    const float upper[4] = {pile.EA, pile.EIx, pile.EIy, pile.GJ};
    const float lower[4] = {pile.UnreinforcedEA, pile.UnreinforcedEIx, pile.UnreinforcedEIy, pile.UnreinforcedGJ};
    const bool has_lower = pile.ReinforcedLength < pile.Length;
    const bool has_upper = pile.ReinforcedLength > 0.0f || !has_lower;
    std::string text = has_upper ? SectionFinding(pile, has_lower ? "reinforced section" : "section", upper) : "";
    if (text.empty() && has_lower) text = SectionFinding(pile, has_upper ? "unreinforced section" : "section", lower);
    if (!text.empty()) g.add(p, text);
  }
  g.flush("section-stiffness", out);
}

void SoilStiffness(const Engine& e, std::vector<Diagnostic>& out) {
  const Borehole& b = e.borehole;
  for (int i = 1; i <= b.NumberOfLayers; ++i) {
    const Layer& l = b.Layers(i);
    const float thickness = i < b.NumberOfLayers ? b.Layers(i + 1).DepthToTop - l.DepthToTop : 10.0f;
    const double t = Dbl(std::max(0.0f, thickness)) / 2.0;
    const std::pair<const char*, double> moduli[] = {{"vertical modulus Ev", Dbl(l.Ev) + t * Dbl(l.dEv)},
                                                     {"horizontal modulus Eh", Dbl(l.Eh) + t * Dbl(l.dEh)}};
    for (const auto& [name, E] : moduli) {
      if (E >= 1000.0 && E <= 2.0e7) continue;
      const std::string layer_name(l.Name.trimmed());
      out.push_back(Diagnostic{1, "soil-stiffness", 0,
                               "layer " + std::to_string(i) + (layer_name.empty() ? "" : " (" + layer_name + ")") +
                                   ": its " + name + " is " + Num(E) + " kPa at Z = " + Num(Dbl(l.DepthToTop) + t) +
                                   " m, outside 1 MPa to 20 GPa (1000 to 2e7 kPa): most likely a unit slip " +
                                   "(MPa for kPa, or Pa for kPa)"});
      break;
    }
  }
}

void ClosePiles(const Engine& e, std::vector<Diagnostic>& out) {
  const Foundation& f = e.foundation;
  constexpr int kMostShown = 10;
  int found = 0;
  for (int p = 1; p <= f.NumberOfPiles; ++p) {
    for (int q = p + 1; q <= f.NumberOfPiles; ++q) {
      const Pile& a = f.Piles(p);
      const Pile& b = f.Piles(q);
      const double dx = Dbl(a.SoilEntryX) - Dbl(b.SoilEntryX);
      const double dy = Dbl(a.SoilEntryY) - Dbl(b.SoilEntryY);
      const double s = std::sqrt(dx * dx + dy * dy);
      const double D = Dbl(std::max(a.ShaftDiameter, b.ShaftDiameter));
      if (!(s < 2.5 * D)) continue;
      if (++found <= kMostShown)
        out.push_back(Diagnostic{1, "close-piles", 0,
                                 "piles " + std::to_string(p) + " and " + std::to_string(q) + ": " + Num(s) +
                                     " m apart centre to centre where they enter the ground, less than 2.5 "
                                     "diameters (" + Num(2.5 * D) +
                                     " m): the interaction of point loads on the pile axes is least "
                                     "reliable this close"});
    }
  }
  if (found > kMostShown)
    out.push_back(Diagnostic{1, "close-piles", 0,
                             "and " + std::to_string(found - kMostShown) + " more pairs of piles closer than 2.5 diameters"});
}

bool SameSection(const Pile& a, const Pile& b) {
  return a.ReinforcedLength == b.ReinforcedLength && a.UnreinforcedEA == b.UnreinforcedEA &&
         a.UnreinforcedEIx == b.UnreinforcedEIx && a.UnreinforcedEIy == b.UnreinforcedEIy &&
         a.UnreinforcedGJ == b.UnreinforcedGJ;
}

// The engine keeps the pile matrix of the pile it handled last and takes it over for the
// next pile if the two are alike in length, diameters, rakes and reinforced section.
void SharedPileMatrix(const Engine& e, std::vector<Diagnostic>& out) {
  const Foundation& f = e.foundation;
  for (int p = 2; p <= f.NumberOfPiles; ++p) {
    const Pile& before = f.Piles(p - 1);
    const Pile& pile = f.Piles(p);
    if (!PilesStructurallyAlike(before, pile) || SameSection(before, pile)) continue;
    out.push_back(Diagnostic{
        1, "shared-pile-matrix", 0,
        "piles " + std::to_string(p - 1) + " and " + std::to_string(p) +
            " differ only in their reinforced length (" + Num(before.ReinforcedLength) + " and " +
            Num(pile.ReinforcedLength) +
            " m) or unreinforced section: the engine takes them as alike and builds one pile matrix for both, so "
            "pile " +
            std::to_string(p) + " is analysed with the pile matrix of pile " + std::to_string(p - 1) +
            ", whose moments can be off by a factor of two; run with the corrected mechanics "
            "(quellon run --mechanics corrected), put a pile of another kind between them in the pile table, or "
            "make their EA differ in the last digit"});
  }
}

void CapTorque(const Engine& e, std::vector<Diagnostic>& out) {
  const Foundation& f = e.foundation;
  if (f.NumberOfPiles < 2) return;
  const Actions& a = e.actions;
  const double dx = Dbl(a.X) - Dbl(f.CentreOfRotationX);
  const double dy = Dbl(a.Y) - Dbl(f.CentreOfRotationY);
  const double T = Dbl(a.Mz) + dx * Dbl(a.Fy) - dy * Dbl(a.Fx);
  if (!(std::fabs(T) > 1e-6)) return;
  out.push_back(Diagnostic{
      1, "cap-torque", 0,
      "the loads put a torque of " + Num(T) + " kNm on the cap about the centre of rotation (X = " +
          Num(f.CentreOfRotationX) + ", Y = " + Num(f.CentreOfRotationY) +
          " m): the cap's unit twist is a finite rotation of one radian, which also moves every pile towards the "
          "centre, so a torque gives radial pile forces and moments where symmetry needs none, and the twist "
          "terms of the group stiffness change with whether a torque is applied; the corrected mechanics "
          "(quellon run --mechanics corrected) analyse the twist without these flaws"});
}

}  // namespace

void LintModel(const Engine& e, std::vector<Diagnostic>& out) {
  ShortElements(e, out);
  SectionStiffness(e, out);
  SoilStiffness(e, out);
  ClosePiles(e, out);
  // The corrected mechanics remove the two flaws that these warnings name.
  if (!e.corrected_mechanics) {
    SharedPileMatrix(e, out);
    CapTorque(e, out);
  }
}

}  // namespace quellon
