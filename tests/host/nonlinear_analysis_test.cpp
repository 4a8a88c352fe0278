// Whole non-linear analyses through the C API: a pile and a pair loaded to their axial
// capacity, the elastic-perfectly plastic limit and the lag of yield behind the load,
// elastic unloading, and the spacing ratios under a reversed horizontal load.
#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "host_support.h"
#include "quellon.h"

namespace host {
namespace {

using NonLinearAnalysis = HostTest;
constexpr double kPi = 3.141592653589793;

// Under a vertical load (kN a pile) with the hyperbolic constants r. The engine's own
// elimination solves these small systems quicker than the LAPACK route.
Model ClayPiles(int piles, int elements, int increments, double fz, double r) {
  Model m = Row(piles, elements, increments, fz);
  m.r = r;
  return m.Flag(16, false);
}

// The increment in whose update each axial element r was logged as yielded; 0 if never.
std::vector<int> AxialYields(const RunRecord& run, int rows) {
  std::vector<int> at(static_cast<std::size_t>(rows + 1), 0);
  int increment = 0;
  for (const std::string& line : run.Log()) {
    if (line.rfind("CreateIncrement: ", 0) == 0) increment = std::stoi(line.substr(17));
    if (line.rfind("Element ", 0) != 0 || line.find(" yielded") != line.size() - 8) continue;
    const std::size_t r = std::stoul(line.substr(8));
    if (r >= 1 && r <= static_cast<std::size_t>(rows) && at[r] == 0) at[r] = increment;
    else ADD_FAILURE() << "yielded twice or unknown: " << line;
  }
  return at;
}

std::vector<double> SettlementSteps(const RunRecord& run) {
  std::vector<double> steps;
  for (std::size_t i = 0; i < run.increments.size(); ++i)
    steps.push_back(run.increments[i].disp[2] - (i > 0 ? run.increments[i - 1].disp[2] : 0.0f));
  return steps;
}

TEST_F(NonLinearAnalysis, PileAndPairStopAtTheirAxialCapacity) {
  // Twice the capacity in 20 steps. By hand: adhesion on the shaft and nine times cu on
  // the base, 598.5 kN a pile; the axial limits don't depend on the neighbours.
  const double capacity = 0.5 * 50.0 * kPi * 0.6 * 10.0 + 9.0 * 50.0 * kPi * 0.09;
  for (int piles : {1, 2}) {
    const Model m = ClayPiles(piles, 4, 20, 1200.0, 0.5);
    const RunRecord run = Analyse(dir, std::to_string(piles), &m);
    const int k = static_cast<int>(run.increments.size()), rows = 5 * piles;
    ASSERT_GE(k, 2);
    EXPECT_EQ(run.result, 1);
    EXPECT_EQ(run.events.back(), "message 0 Finished running the boundary element analysis (success)");
    EXPECT_EQ(Messages(run.events, 2), Lines{"Ultimate axial capacity of single pile exceeded after increment " + std::to_string(k)});
    // The increment that ends the run is reported but not counted; none follows it. Equal
    // load steps settle by growing steps: the curve softens from the first step on.
    const std::vector<double> steps = SettlementSteps(run);
    for (int i = 1; i <= k; ++i) {
      const Increment& r = run.increments[static_cast<std::size_t>(i - 1)];
      EXPECT_EQ(r.came.count("counter"), i < k ? 1u : 0u) << i;
      EXPECT_NEAR(r.load[2], 60.0 * piles * i, 1e-3) << i;
      EXPECT_GT(steps[static_cast<std::size_t>(i - 1)], i > 1 ? steps[static_cast<std::size_t>(i - 2)] : 0.0) << i;
    }
    const Lines txt = ReadLines(run.txt);
    const std::size_t error = Find(txt, "ERROR: Ultimate axial capacity of the " + std::string(piles == 1 ? "pile" : "group") +
                                            " reached at load increment no " + std::to_string(k));
    EXPECT_EQ(txt.at(error + 1), " Please re-run TOLMARK for lower applied loads");  // not found: the first
    // The XML document is whole, with one cap block for each increment that ran.
    const XmlResults xml = ReadXml(run.xml);
    EXPECT_TRUE(xml.complete && xml.cap_blocks == k) << xml.cap_blocks;
    // Every element yields once, the last in the increment that ends the run. With all of
    // them over their limits the load is over the sum of the limits, so the stop can't come
    // before the capacity by hand; it comes within two steps of it (one for the lag).
    const std::vector<int> yields = AxialYields(run, rows);
    EXPECT_EQ(std::count(yields.begin() + 1, yields.end(), 0), 0);
    EXPECT_EQ(*std::max_element(yields.begin(), yields.end()), k);
    EXPECT_GE(60.0 * k, capacity);  // a pile's share of the load against a pile's capacity
    EXPECT_LT(60.0 * (k - 2), capacity);
  }
}

TEST_F(NonLinearAnalysis, WithoutSofteningLinearUntilAYieldFoundAtTheEndOfItsIncrement) {
  // All hyperbolic constants 0: the soil keeps its elastic stiffness up to its limit, so
  // every increment settles alike until one in which an element yields; the next is softer.
  const Model epp = ClayPiles(1, 4, 20, 1200.0, 0.0);
  const RunRecord run = Analyse(dir, "epp", &epp);
  const std::vector<int> yields = AxialYields(run, 5);
  const int first = *std::min_element(yields.begin() + 1, yields.end());
  ASSERT_GE(first, 3) << "too few elastic increments to compare";
  const std::vector<double> steps = SettlementSteps(run);
  ASSERT_GT(steps.size(), static_cast<std::size_t>(first));
  for (int i = 2; i <= first; ++i) EXPECT_NEAR(steps[static_cast<std::size_t>(i - 1)], steps[0], 1e-5 * steps[0]) << i;
  EXPECT_GT(steps[static_cast<std::size_t>(first)], 1.01 * steps[0]);
  // 900 kN in two steps: the first already takes the lowest shaft element past its limit,
  // found only at the end of the step, which moves exactly as a linear run of 450 kN.
  const Model two = ClayPiles(1, 4, 2, 900.0, 0.0), one = ClayPiles(1, 4, 1, 450.0, 0.0);
  const RunRecord lag = Analyse(dir, "lag", &two), linear = Analyse(dir, "linear", &one);
  const std::vector<int> lag_yields = AxialYields(lag, 5);
  EXPECT_EQ(std::count(lag_yields.begin(), lag_yields.end(), 1), 1);
  ASSERT_EQ(lag.increments.size(), 2u);
  EXPECT_NEAR(lag.increments[0].disp[2], linear.increments.at(0).disp[2], 1e-6 * double(linear.increments[0].disp[2]));
  EXPECT_GT(SettlementSteps(lag)[1], 1.05 * SettlementSteps(lag)[0]);
}

TEST_F(NonLinearAnalysis, ElasticUnloadingNeedsSixteenElementsAndTheAllowance) {
  // A pile pushed sideways in 15 steps until most of its elements yield in X. An element
  // unloads when its X stress, yielded before, is set back to 0 out of the yielded state.
  struct Outcome {
    RunRecord run;
    int unloaded = 0, yields = 0;  // the first increment with an unloading, the yields in X
  };
  auto analyse = [&](int n, bool allowance) {
    Model m = ClayPiles(1, n, 15, 0.0, 0.5);
    m.fx = 1500.0, m.unloading = allowance;
    Outcome o{Analyse(dir, std::to_string(n) + (allowance ? "on" : "off"), &m)};
    const XmlResults xml = ReadXml(o.run.xml);
    EXPECT_EQ(xml.piles.size(), 15u);
    for (std::size_t b = 1; b < xml.piles.size(); ++b)
      for (std::size_t k = 1; k <= static_cast<std::size_t>(n); ++k) {
        const XmlValue &was = xml.piles[b - 1][0][k].at("Normal-Stress X"), &is = xml.piles[b][0][k].at("Normal-Stress X");
        o.yields += is.yield ? 1 : 0;
        if (!was.yield || is.yield || is.value != 0.0f || o.unloaded != 0) continue;
        o.unloaded = static_cast<int>(b + 1);
        // Back in the system with its elastic stiffness it takes stress again at once,
        // which a released element wouldn't.
        EXPECT_TRUE(b + 1 == xml.piles.size() || std::fabs(xml.piles[b + 1][0][k].at("Normal-Stress X").value) > 10.0f);
      }
    return o;
  };
  const Outcome on = analyse(16, true), off = analyse(16, false), on15 = analyse(15, true), off15 = analyse(15, false);
  ASSERT_TRUE(on.unloaded > 0 && on.unloaded < 15);
  EXPECT_EQ(off.unloaded + on15.unloaded, 0);
  EXPECT_GT(on15.yields, 0);
  // With and without the allowance the runs are the same analysis until the first
  // unloading and part after it; with 15 elements they never part.
  for (std::size_t i = 0; i < 15; ++i) {
    EXPECT_EQ(on.run.increments.at(i).disp == off.run.increments.at(i).disp, static_cast<int>(i) < on.unloaded) << i;
    EXPECT_EQ(on15.run.increments.at(i).disp, off15.run.increments.at(i).disp) << i;
  }
}

TEST_F(NonLinearAnalysis, ReversedHorizontalLoadMirrorsTheGroup) {
  // Two piles 1.5 m apart in a row along the load: the trailing pile has its lateral
  // limit cut to 2 Sx cu with Sx = 1.5 / 0.6, the leading one keeps the single pile's.
  // Reversing the load swaps the roles, and the whole non-linear run mirrors.
  for (std::size_t axis : {0u, 1u}) {
    const std::string along = axis == 0 ? "Normal-Stress X" : "Normal-Stress Y";
    RunRecord runs[2];
    XmlResults xml[2];
    for (std::size_t s = 0; s < 2; ++s) {
      Model m = ClayPiles(2, 6, 4, 400.0, 0.5);
      for (std::size_t p = 0; p < 2; ++p) m.piles[p].x = 0.0, (axis == 0 ? m.piles[p].x : m.piles[p].y) = 1.5 * double(p) - 0.75;
      (axis == 0 ? m.fx : m.fy) = s == 0 ? 1000.0 : -1000.0;
      runs[s] = Analyse(dir, std::to_string(axis) + std::to_string(s), &m);
      xml[s] = ReadXml(runs[s].xml);
      ASSERT_TRUE(runs[s].increments.size() == 4 && xml[s].piles.size() == 4);
      // At the lowest element: 2 Sx cu behind, 9 cu ahead; pile 1 trails the positive load.
      EXPECT_NEAR(xml[s].piles[0][s][6].at(along).limit, 250.0, 0.1) << axis << s;
      EXPECT_NEAR(xml[s].piles[0][1 - s][6].at(along).limit, 450.0, 0.1) << axis << s;
    }
    // The cap's movement mirrors in every increment: along the load, the rotation in its
    // plane and the twist change sign. Each pile does as its mirror image did, yield states
    // included, and lateral yield did happen, so the limits took part.
    int yields = 0;
    for (std::size_t b = 0; b < 4; ++b) {
      std::array<float, 6> mirrored = runs[0].increments[b].disp;
      for (std::size_t c : {axis, 4 - axis, std::size_t{5}}) mirrored[c] = -mirrored[c];
      EXPECT_LT(MovementDifference(mirrored, runs[1].increments[b].disp), 1e-5) << axis << b;
      for (std::size_t p = 0; p < 2; ++p)
        for (std::size_t k = 1; k <= 6; ++k) {
          const XmlValue &a = xml[0].piles[b][p][k].at(along),
                         &m = xml[1].piles[b][1 - p][k].at(along);
          EXPECT_NEAR(m.value, -a.value, 2e-3 * double(std::fabs(a.value)) + 0.02) << axis << b << p << k;
          EXPECT_EQ(m.yield, a.yield) << axis << b << p << k;
          yields += a.yield ? 1 : 0;
        }
    }
    EXPECT_GT(yields, 0);
  }
}

}  // namespace
}  // namespace host
