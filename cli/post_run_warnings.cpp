#include "post_run_warnings.h"

#include <cmath>
#include <cstdio>
#include <set>
#include <utility>

namespace quellon_cli {

namespace {

std::string Format(const char* format, double a, double b = 0, double c = 0) {
  char buf[128];
  std::snprintf(buf, sizeof buf, format, a, b, c);
  return buf;
}

std::string Where(const RunResults& r, const PileResult& pile, const ElementResult& e, std::size_t p) {
  std::string s = "pile " + std::to_string(pile.number);
  if (!pile.name.empty()) s += " (" + pile.name + ")";
  s += e.toe ? ", base" : ", element " + std::to_string(e.number);
  if (p < r.piles.size()) {
    const PileGeometry g(r.piles[p], r.elements);
    const double along = e.toe ? e.depth : e.depth + 0.5 * e.length;
    s += Format(", %.2f m below the ground", g.depth(along));
  }
  return s;
}

std::string OvershootWarning(const RunResults& r) {
  static const char* const kKind[4] = {"axial", "normal X", "normal Y", "torsional"};
  std::set<std::pair<int, int>> elements;  // pile, element
  double worst = 0;
  std::string where;
  for (const IncrementResult& inc : r.increments) {
    for (std::size_t p = 0; p < inc.piles.size(); ++p) {
      const PileResult& pile = inc.piles[p];
      for (const ElementResult& e : pile.elements) {
        if (e.number == 0) continue;
        for (std::size_t s = 0; s < 4; ++s) {
          const double limit = std::fabs(e.limit[s]);
          if (limit <= 0) continue;
          const double ratio = std::fabs(e.stress[s]) / limit;
          if (ratio <= kOvershootRatio) continue;
          elements.insert({pile.number, e.number});
          if (ratio > worst) {
            worst = ratio;
            where = std::string(e.toe ? "base pressure" : kKind[s]) + " stress of " + Where(r, pile, e, p) +
                    " at increment " + std::to_string(inc.number);
          }
        }
      }
    }
  }
  if (elements.empty()) return "";
  return std::to_string(elements.size()) + " elements stood more than 10 % above a limiting stress at some increment" +
         " (largest: " + Format("%.2f", worst) + " times the limit, " + where +
         "). Yield is decided one increment after the limit is passed and the overshoot is kept,"
         " so these elements carry more than the ground can; use more increments.";
}

std::string CapacityWarning(const RunResults& r) {
  const IncrementResult* last = r.last_with_piles();
  if (last == nullptr) return "";
  double shaft = 0, base = 0;
  for (std::size_t p = 0; p < last->piles.size() && p < r.piles.size(); ++p) {
    const PileInput& in = r.piles[p];
    const PileGeometry g(in, r.elements);
    for (const ElementResult& e : last->piles[p].elements) {
      if (e.number == 0) continue;
      const double limit = std::fabs(e.limit[kStressAxial]);
      if (e.toe)
        base += limit * 3.14159265358979 * in.base_diameter * in.base_diameter * 0.25;
      else
        shaft += limit * 3.14159265358979 * in.shaft_diameter * g.h;
    }
  }
  const double capacity = shaft + base;
  // The vertical load after the last increment performed, and after the one before.
  const IncrementResult* stop = nullptr;
  const IncrementResult* before = nullptr;
  for (const IncrementResult& inc : r.increments) {
    if (!inc.has_cap) continue;
    before = stop;
    stop = &inc;
  }
  if (stop == nullptr || capacity <= 0) return "";
  const double load = std::fabs(stop->cap_load[2]);
  const bool stopped = r.axial_capacity_used_up();
  if (!stopped && load <= capacity) return "";
  std::string s = Format(
      "the axial capacity of the group, the sum of its limiting stresses, is %.0f kN (shaft %.0f kN, base %.0f kN); ",
      capacity, shaft, base);
  if (stopped) {
    if (before != nullptr)
      s += Format("the run accepted %.0f kN", std::fabs(before->cap_load[2])) + " (increment " +
           std::to_string(before->number) + ") and ";
    s += Format("stopped at %.0f kN", load) + " (increment " + std::to_string(stop->number) + ")";
  } else {
    s += Format("the run carried %.0f kN", load) + " (increment " + std::to_string(stop->number) + ")";
  }
  s += ". With coarse increments the stop comes late and the group carries more than its limits allow;"
       " use more increments to find the failure load.";
  return s;
}

}  // namespace

std::vector<Warning> PostRunWarnings(const RunResults& r) {
  std::vector<Warning> out;
  if (!r.nonlinear) return out;
  if (std::string w = OvershootWarning(r); !w.empty()) out.push_back({"stress-overshoot", "", w});
  if (std::string w = CapacityWarning(r); !w.empty()) out.push_back({"group-capacity", "", w});
  return out;
}

}  // namespace quellon_cli
