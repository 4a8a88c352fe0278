// Whole non-linear analyses through the C API: a pile and a group loaded to their axial
// capacity, the elastic-perfectly plastic limit of the soil model, the lag of yield behind
// the load, elastic unloading, and the spacing ratios under a reversed horizontal load.
#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "host_support.h"
#include "model_builder.h"
#include "quellon.h"
#include "xml_results.h"

namespace host {
namespace {

using NonLinearAnalysis = HostTest;

constexpr double kPi = 3.141592653589793;

// Piles 10 m long, 0.6 m across, 3 m apart in a row along X about the origin, in clay of
// cu 50 kPa and adhesion 0.5, under a vertical load in `increments` equal steps. These
// small systems are solved by the engine's own elimination (flag 16 clear), which for
// them is quicker than starting the threads of the LAPACK route at every increment.
ModelSpec ClayPiles(int piles, int elements, int increments, double fz, double r) {
  ModelSpec m;
  m.piles.assign(static_cast<std::size_t>(piles), PileSpec{});
  for (int p = 0; p < piles; ++p) m.piles[static_cast<std::size_t>(p)].x = 3.0 * p - 1.5 * (piles - 1);
  m.elements = elements;
  m.increments = increments;
  m.fz = fz;
  m.rs = m.rb = m.rl = m.rt = r;
  m.SetFlag(16, false);
  return m;
}

// The axial capacity of one such pile worked out by hand: adhesion on the shaft and
// nine times cu on the base.
double AxialCapacity(const PileSpec& p, const LayerSpec& l) {
  return l.alpha * l.cu * kPi * p.diameter * p.length + 9.0 * l.cu * kPi * p.base_diameter * p.base_diameter / 4.0;
}

// The increment in which each LOG line "Element r yielded" was written, by r; 0 if never.
// A yield is found in the update at the end of an increment, before its counter line.
std::vector<int> AxialYieldIncrements(const std::vector<std::string>& log, int rows) {
  std::vector<int> at(static_cast<std::size_t>(rows + 1), 0);
  int increment = 0;
  for (const std::string& line : log) {
    if (line.rfind("CreateIncrement: ", 0) == 0) increment = std::stoi(line.substr(17));
    if (line.rfind("Element ", 0) == 0 && line.size() > 16 && line.compare(line.size() - 8, 8, " yielded") == 0) {
      const int r = std::stoi(line.substr(8));
      EXPECT_TRUE(r >= 1 && r <= rows) << line;
      if (r < 1 || r > rows) continue;
      EXPECT_EQ(at[static_cast<std::size_t>(r)], 0) << "element " << r << " yielded twice";
      at[static_cast<std::size_t>(r)] = increment;
    }
  }
  return at;
}

// What a run ended by the axial capacity must show in the increment k in which it ends,
// for a group of `rows` axial unknowns.
void ExpectCapacityStop(const RunRecord& run, int k, int rows, const std::string& txt_words) {
  EXPECT_EQ(run.result, 1);
  EXPECT_EQ(run.events.back(), "message 0 Finished running the boundary element analysis (success)");
  EXPECT_EQ(run.Messages(2), std::vector<std::string>{"Ultimate axial capacity of single pile exceeded after increment " +
                                                      std::to_string(k)});
  // The increment that ends the run is reported, but not counted; none follows it.
  ASSERT_EQ(static_cast<int>(run.increments.size()), k);
  for (int i = 0; i < k; ++i) {
    const IncrementRecord& r = run.increments[static_cast<std::size_t>(i)];
    EXPECT_EQ(r.counted, i + 1 < k) << "increment " << i + 1;
    EXPECT_TRUE(r.displacements) << "increment " << i + 1;
  }
  std::string out;
  for (int i = 1; i < k; ++i) out += "Increment " + std::to_string(i) + "\n";
  EXPECT_EQ(run.stdout_text, out);

  const std::vector<std::string> log = run.LogLines();
  const std::size_t stop = Find(log, "Axial elements yielded = " + std::to_string(rows) + "/" + std::to_string(rows));
  ASSERT_NE(stop, std::string::npos);
  EXPECT_EQ(log[stop + 1], "[Error] Ultimate axial capacity of single pile exceeded after increment " + std::to_string(k));
  EXPECT_EQ(Find(log, "Increment " + std::to_string(k)), std::string::npos);
  EXPECT_NE(Find(log, "Finished running the boundary element analysis (success)"), std::string::npos);

  const std::vector<std::string> txt = ReadLines(run.txt);
  const std::size_t error = Find(txt, "ERROR: Ultimate axial capacity of the " + txt_words +
                                          " reached at load increment no " + std::to_string(k));
  ASSERT_NE(error, std::string::npos);
  EXPECT_EQ(txt[error - 1], std::string(72, '*'));
  EXPECT_EQ(txt[error + 1], " Please re-run TOLMARK for lower applied loads");
  EXPECT_EQ(txt[error + 2], std::string(72, '*'));
  // The report of the last increment stands complete before the stop.
  EXPECT_NE(Find(txt, "Total no. of yielded elements due to shear stresses=" + std::string(rows < 10 ? "  " : " ") +
                          std::to_string(rows)),
            std::string::npos);

  // The document is whole: one cap block per increment that ran, and its end.
  const XmlResults xml = ReadXmlResults(run.xml);
  EXPECT_TRUE(xml.well_formed) << xml.error;
  EXPECT_TRUE(xml.complete);
  EXPECT_EQ(xml.pile_cap_blocks, k);
}

TEST_F(NonLinearAnalysis, SinglePileLoadedToItsAxialCapacity) {
  // Twice the capacity in 20 steps: each step a tenth of the capacity.
  ModelSpec m = ClayPiles(1, 4, 20, 1200.0, 0.5);
  for (int f : {28, 29}) m.SetFlag(f, true);
  const double capacity = AxialCapacity(m.piles[0], m.layers[0]);  // 598.5 kN
  const RunRecord run = RunModel(m, dir, "single");
  ASSERT_GE(run.increments.size(), 2u);
  const int k = static_cast<int>(run.increments.size());
  ExpectCapacityStop(run, k, 5, "pile");

  // The load grows by equal steps and the settlement by growing ones: the curve softens
  // from the first step on (the hyperbolic law), and never stiffens.
  double previous = 0.0, step = 0.0;
  for (int i = 1; i <= k; ++i) {
    const IncrementRecord& r = run.increments[static_cast<std::size_t>(i - 1)];
    EXPECT_NEAR(r.load[2], 60.0 * i, 1e-3) << i;
    const double s = r.disp[2] - previous;
    EXPECT_GT(s, step) << "increment " << i;
    step = s;
    previous = r.disp[2];
  }
  // Every element yields once, the last of them in the increment that ends the run.
  const std::vector<int> yielded = AxialYieldIncrements(run.LogLines(), 5);
  for (int r = 1; r <= 5; ++r) EXPECT_GT(yielded[static_cast<std::size_t>(r)], 0) << "element " << r;
  EXPECT_EQ(*std::max_element(yielded.begin(), yielded.end()), k);
  // With every element over its limit the load on the cap, which the elements carry,
  // is over the sum of the limits: the stop can't come before the capacity by hand. It
  // comes soon after it, within two steps (one for the lag of yield behind the load).
  EXPECT_GE(60.0 * k, capacity);
  EXPECT_LT(60.0 * (k - 2), capacity);
}

TEST_F(NonLinearAnalysis, TwoPileGroupStopsWithTheGroupTexts) {
  ModelSpec m = ClayPiles(2, 4, 20, 2400.0, 0.5);
  for (int f : {27, 28, 29, 31}) m.SetFlag(f, true);
  const RunRecord run = RunModel(m, dir, "pair");
  ASSERT_GE(run.increments.size(), 2u);
  const int k = static_cast<int>(run.increments.size());
  ExpectCapacityStop(run, k, 10, "group");
  EXPECT_EQ(ReadXmlResults(run.xml).piles.size(), static_cast<std::size_t>(k));
  // The axial limits don't depend on the neighbours: the group's capacity is twice a
  // pile's, and the stop comes within two steps of it as for a single pile.
  const double capacity = 2.0 * AxialCapacity(m.piles[0], m.layers[0]);
  EXPECT_GE(120.0 * k, capacity);
  EXPECT_LT(120.0 * (k - 2), capacity);
}

// The cap settlement of each increment.
std::vector<double> SettlementSteps(const RunRecord& run) {
  std::vector<double> steps;
  double previous = 0.0;
  for (const IncrementRecord& r : run.increments) {
    steps.push_back(r.disp[2] - previous);
    previous = r.disp[2];
  }
  return steps;
}

TEST_F(NonLinearAnalysis, WithoutSofteningTheResponseIsLinearUntilTheFirstYield) {
  // All four hyperbolic constants 0: the soil keeps its elastic stiffness up to the limit
  // (elastic-perfectly plastic), so every increment settles alike until an element
  // yields, and the increment after that settles more.
  const RunRecord run = RunModel(ClayPiles(1, 4, 20, 1200.0, 0.0), dir, "epp");
  ASSERT_EQ(run.result, 1);
  const std::vector<int> yielded = AxialYieldIncrements(run.LogLines(), 5);
  int first = 0;
  for (int i : yielded)
    if (i > 0 && (first == 0 || i < first)) first = i;
  ASSERT_GE(first, 3) << "too few elastic increments to compare";
  const std::vector<double> steps = SettlementSteps(run);
  ASSERT_GT(steps.size(), static_cast<std::size_t>(first));
  for (int i = 2; i <= first; ++i) EXPECT_NEAR(steps[static_cast<std::size_t>(i - 1)], steps[0], 1e-5 * steps[0]) << i;
  EXPECT_GT(steps[static_cast<std::size_t>(first)], 1.01 * steps[0]);
}

TEST_F(NonLinearAnalysis, FirstIncrementIsElasticAndYieldLagsOneIncrement) {
  // 900 kN in two steps: the first step of 450 kN already takes the lowest shaft element
  // past its limit. That is found only at the end of the step, so the step itself moves
  // exactly as a linear analysis of 450 kN does, and only the second step is softer.
  const RunRecord run = RunModel(ClayPiles(1, 4, 2, 900.0, 0.0), dir, "lag");
  const RunRecord linear = RunModel(ClayPiles(1, 4, 1, 450.0, 0.0), dir, "linear");
  ASSERT_EQ(run.result, 1);
  ASSERT_EQ(linear.result, 1);
  const std::vector<int> yielded = AxialYieldIncrements(run.LogLines(), 5);
  EXPECT_EQ(std::count(yielded.begin(), yielded.end(), 1), 1) << "one element past its limit in the first step";
  ASSERT_EQ(run.increments.size(), 2u);
  EXPECT_NEAR(run.increments[0].disp[2], linear.increments.at(0).disp[2], 1e-6 * linear.increments[0].disp[2]);
  const std::vector<double> steps = SettlementSteps(run);
  EXPECT_GT(steps[1], 1.05 * steps[0]);
}

// Elements whose X stress was set back to nothing after they had yielded: the mark of
// elastic unloading. One entry per case, the increment in which it happened.
std::vector<int> UnloadedInX(const XmlResults& xml) {
  std::vector<int> at;
  for (std::size_t b = 1; b < xml.piles.size(); ++b)
    for (std::size_t p = 0; p < xml.piles[b].size(); ++p)
      for (std::size_t k = 1; k < xml.piles[b][p].elements.size(); ++k) {
        const XmlValue& before = xml.piles[b - 1][p].elements[k].at("Normal-Stress X");
        const XmlValue& now = xml.piles[b][p].elements[k].at("Normal-Stress X");
        if (before.yield && !now.yield && now.value == 0.0f) at.push_back(static_cast<int>(b + 1));
      }
  return at;
}

int YieldedInX(const XmlResults& xml) {
  int count = 0;
  for (const auto& block : xml.piles)
    for (const XmlPile& pile : block)
      for (const XmlQuantities& e : pile.elements) {
        const auto it = e.find("Normal-Stress X");
        count += it != e.end() && it->second.yield ? 1 : 0;
      }
  return count;
}

TEST_F(NonLinearAnalysis, ElasticUnloadingNeedsSixteenElementsAndTheAllowance) {
  // A single pile pushed sideways in 15 steps until most of its elements have yielded in
  // X; the results of every increment go to the XML output.
  auto model = [](int elements, bool allowance) {
    ModelSpec m = ClayPiles(1, elements, 15, 0.0, 0.5);
    m.fx = 1125.0;
    m.elastic_unloading = allowance;
    for (int f : {27, 28, 31}) m.SetFlag(f, true);
    return m;
  };
  RunOptions quiet;
  quiet.txt = false;
  quiet.log = false;
  const RunRecord on = RunModel(model(16, true), dir, "on16", quiet);
  const RunRecord off = RunModel(model(16, false), dir, "off16", quiet);
  const XmlResults xml_on = ReadXmlResults(on.xml);
  const XmlResults xml_off = ReadXmlResults(off.xml);
  ASSERT_EQ(xml_on.piles.size(), 15u);
  ASSERT_EQ(xml_off.piles.size(), 15u);

  // With 16 elements and the allowance an element unloads: its stress goes to 0 and it
  // leaves the yielded state, back in the system with its elastic stiffness. It then takes
  // stress again at once, which a released element can't (it follows the pile with a
  // stress of the size of the cap movement).
  const std::vector<int> unloaded = UnloadedInX(xml_on);
  ASSERT_FALSE(unloaded.empty());
  const int first = *std::min_element(unloaded.begin(), unloaded.end());
  ASSERT_LT(first, 15);
  bool loaded_again = false;
  for (std::size_t k = 1; k <= 16; ++k) {
    const XmlValue& v = xml_on.piles[static_cast<std::size_t>(first) - 1][0].elements[k].at("Normal-Stress X");
    const XmlValue& next = xml_on.piles[static_cast<std::size_t>(first)][0].elements[k].at("Normal-Stress X");
    if (v.value == 0.0f && std::fabs(next.value) > 10.0f) loaded_again = true;
  }
  EXPECT_TRUE(loaded_again);
  // Without the allowance nothing unloads; until the first unloading the two runs are the
  // same analysis, and after it they part.
  EXPECT_TRUE(UnloadedInX(xml_off).empty());
  for (int i = 1; i <= 15; ++i) {
    const std::size_t j = static_cast<std::size_t>(i - 1);
    if (i <= first) {
      EXPECT_EQ(on.increments.at(j).disp, off.increments.at(j).disp) << "increment " << i;
    } else {
      EXPECT_NE(on.increments.at(j).disp[0], off.increments.at(j).disp[0]) << "increment " << i;
    }
  }

  // With 15 elements the allowance does nothing at all, though elements yield in X.
  const RunRecord on15 = RunModel(model(15, true), dir, "on15", quiet);
  const RunRecord off15 = RunModel(model(15, false), dir, "off15", quiet);
  ASSERT_EQ(on15.increments.size(), off15.increments.size());
  for (std::size_t j = 0; j < on15.increments.size(); ++j)
    EXPECT_EQ(on15.increments[j].disp, off15.increments[j].disp) << "increment " << j + 1;
  EXPECT_GT(YieldedInX(ReadXmlResults(on15.xml)), 0);
  EXPECT_TRUE(UnloadedInX(ReadXmlResults(on15.xml)).empty());
}

TEST_F(NonLinearAnalysis, ReversedHorizontalLoadMirrorsTheGroup) {
  // Two piles 1.5 m apart in a row along the load, in clay of cu 50 kPa, 0.6 m across: the
  // pile behind the other in the direction of the load has its lateral limit cut to
  // 2 Sx cu, with Sx = 1.5 / 0.6 = 2.5, where the leading pile keeps the single pile's
  // (2 + 7z / 3D) cu, 9 cu from 3D down; across the load both keep the single pile's.
  // Reversing the load swaps the roles, and the whole non-linear run mirrors.
  const double cu = 50.0, d = 0.6, h = 10.0 / 6.0;
  auto single = [&](int k) {
    const double z = (k - 0.5) * h;
    return (z < 3.0 * d ? 2.0 + 7.0 * z / (3.0 * d) : 9.0) * cu;
  };
  for (int axis : {0, 1}) {
    const std::string along = axis == 0 ? "X" : "Y", across = axis == 0 ? "Y" : "X";
    RunRecord runs[2];
    XmlResults xml[2];
    for (int s = 0; s < 2; ++s) {
      ModelSpec m = ClayPiles(2, 6, 4, 800.0, 0.5);
      for (int f : {27, 28, 31}) m.SetFlag(f, true);
      for (int p = 0; p < 2; ++p) {
        m.piles[static_cast<std::size_t>(p)].x = axis == 0 ? 1.5 * p - 0.75 : 0.0;
        m.piles[static_cast<std::size_t>(p)].y = axis == 1 ? 1.5 * p - 0.75 : 0.0;
      }
      (axis == 0 ? m.fx : m.fy) = s == 0 ? 1000.0 : -1000.0;
      runs[s] = RunModel(m, dir, along + std::to_string(s));
      ASSERT_EQ(runs[s].result, 1);
      ASSERT_EQ(runs[s].increments.size(), 4u);
      xml[s] = ReadXmlResults(runs[s].xml);
      ASSERT_EQ(xml[s].piles.size(), 4u);
    }
    // Limits: under the positive load pile 1 trails, under the negative one pile 2.
    for (int s = 0; s < 2; ++s)
      for (int p = 0; p < 2; ++p) {
        const bool trailing = p == s;
        for (int k = 1; k <= 6; ++k) {
          const XmlQuantities& e = xml[s].piles[0][static_cast<std::size_t>(p)].elements[static_cast<std::size_t>(k)];
          const double limit = trailing ? std::min(single(k), 2.0 * 2.5 * cu) : single(k);
          EXPECT_NEAR(e.at("Normal-Stress " + along).limit, limit, 1e-3 * limit) << along << s << " pile " << p + 1 << " element " << k;
          EXPECT_NEAR(e.at("Normal-Stress " + across).limit, single(k), 1e-3 * single(k));
        }
      }
    // The cap's movement mirrors in every increment: along the load and the rotation in
    // its plane change sign, and so does the twist.
    const std::size_t flip_move = axis == 0 ? 0 : 1, flip_turn = axis == 0 ? 4 : 3;
    for (std::size_t i = 0; i < 4; ++i) {
      std::array<float, 6> mirrored = runs[0].increments[i].disp;
      for (std::size_t c : {flip_move, flip_turn, std::size_t{5}}) mirrored[c] = -mirrored[c];
      EXPECT_LT(MovementDifference(mirrored, runs[1].increments[i].disp), 1e-5) << along << " increment " << i + 1;
    }
    // Each pile behaves as its mirror image did, yield states included, and lateral yield
    // did happen, so that the limits took part.
    int yields = 0;
    for (std::size_t b = 0; b < 4; ++b)
      for (std::size_t p = 0; p < 2; ++p)
        for (std::size_t k = 1; k <= 6; ++k) {
          const XmlValue& a = xml[0].piles[b][p].elements[k].at("Normal-Stress " + along);
          const XmlValue& m = xml[1].piles[b][1 - p].elements[k].at("Normal-Stress " + along);
          EXPECT_NEAR(m.value, -a.value, 2e-3 * std::fabs(a.value) + 0.02) << along << " increment " << b + 1;
          EXPECT_EQ(m.yield, a.yield) << along << " increment " << b + 1 << " pile " << p + 1 << " element " << k;
          yields += a.yield ? 1 : 0;
        }
    EXPECT_GT(yields, 0);
  }
}

}  // namespace
}  // namespace host
