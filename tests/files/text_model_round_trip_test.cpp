// A model written to a TMK file, read back as a TMW file and written again gives the
// same file, and the records read back hold the model that was written.
#include <gtest/gtest.h>

#include "engine/engine.h"
#include "files/text_model.h"
#include "text_model_test_support.h"

namespace quellon {
namespace {

using test::FillSampleModel;
using test::ReadBytes;
using test::ScratchPath;

std::string Write(Engine& e, const std::string& name) {
  const std::string path = ScratchPath(name);
  EXPECT_EQ(CreateTMKFile(e, path), 1);
  CloseTMKUnit(e);
  return path;
}

void ExpectSameModel(const Engine& a, const Engine& b) {
  const Project& p = a.project;
  const Project& q = b.project;
  EXPECT_EQ(p.Name, q.Name);
  EXPECT_EQ(p.Description, q.Description);
  EXPECT_EQ(p.Filename, q.Filename);
  EXPECT_EQ(p.Year, q.Year);
  EXPECT_EQ(p.Month, q.Month);
  EXPECT_EQ(p.Day, q.Day);
  for (int i = 1; i <= kFlagCount; ++i) EXPECT_EQ(p.Flag(i), q.Flag(i)) << "flag " << i;
  EXPECT_EQ(p.DynamicModel != 0, q.DynamicModel != 0);
  EXPECT_EQ(p.NonLinear, q.NonLinear);
  EXPECT_EQ(p.InteractionFlag, q.InteractionFlag);
  EXPECT_EQ(p.InteractionDistance, q.InteractionDistance);
  EXPECT_EQ(a.actions.NumberOfIncrements, b.actions.NumberOfIncrements);
  EXPECT_EQ(a.actions.Fx, b.actions.Fx);
  EXPECT_EQ(a.actions.My, b.actions.My);
  EXPECT_EQ(a.actions.X, b.actions.X);
  EXPECT_EQ(a.actions.Y, b.actions.Y);
  EXPECT_EQ(a.foundation.NumberOfElements, b.foundation.NumberOfElements);
  EXPECT_EQ(a.foundation.FreeStandingLength, b.foundation.FreeStandingLength);
  ASSERT_EQ(a.foundation.NumberOfPiles, b.foundation.NumberOfPiles);
  for (int i = 1; i <= a.foundation.NumberOfPiles; ++i) {
    const Pile& x = a.foundation.Piles(i);
    const Pile& y = b.foundation.Piles(i);
    EXPECT_EQ(x.Name, y.Name);
    EXPECT_EQ(x.Number, y.Number);
    for (auto field : {&Pile::Length, &Pile::ShaftDiameter, &Pile::InternalDiameter, &Pile::BaseDiameter,
                       &Pile::RakeX, &Pile::RakeY, &Pile::X, &Pile::Y, &Pile::Z, &Pile::ReinforcedLength, &Pile::EA,
                       &Pile::EIx, &Pile::EIy, &Pile::GJ, &Pile::UnreinforcedEA, &Pile::UnreinforcedEIx,
                       &Pile::UnreinforcedEIy, &Pile::UnreinforcedGJ}) {
      EXPECT_EQ(x.*field, y.*field) << "pile " << i;
    }
  }
  const Borehole& c = a.borehole;
  const Borehole& d = b.borehole;
  EXPECT_EQ(c.DepthToRigidLayer, d.DepthToRigidLayer);
  EXPECT_EQ(c.LayerAveraging, d.LayerAveraging);
  ASSERT_EQ(c.NumberOfLayers, d.NumberOfLayers);
  for (int i = 1; i <= c.NumberOfLayers; ++i) {
    const Layer& x = c.Layers(i);
    const Layer& y = d.Layers(i);
    EXPECT_EQ(x.Name, y.Name);
    for (auto field : {&Layer::DepthToTop, &Layer::Ev, &Layer::dEv, &Layer::Eh, &Layer::dEh, &Layer::Poisson}) {
      EXPECT_EQ(x.*field, y.*field) << "layer " << i;
    }
    if (!p.NonLinear) continue;
    EXPECT_EQ(x.GroundName, y.GroundName);
    EXPECT_EQ(x.GroundType, y.GroundType);
    for (auto field : {&Layer::WeightDensity, &Layer::MaxSkinFriction, &Layer::MaxBearingPressure, &Layer::phi,
                       &Layer::delta, &Layer::Ks, &Layer::cu, &Layer::dcu, &Layer::alpha, &Layer::qu, &Layer::k1,
                       &Layer::k2, &Layer::k3, &Layer::k4, &Layer::k5, &Layer::DirectSkinFriction,
                       &Layer::DirectEndBearing, &Layer::DirectLateral}) {
      EXPECT_EQ(x.*field, y.*field) << "layer " << i;
    }
    EXPECT_EQ(x.HasDirectLateral, y.HasDirectLateral);
  }
  if (p.NonLinear) {
    EXPECT_EQ(c.Overburden, d.Overburden);
    EXPECT_EQ(p.ElasticUnloading, q.ElasticUnloading);
    EXPECT_EQ(p.AutoNq, q.AutoNq);
    EXPECT_EQ(p.Nq, q.Nq);
    EXPECT_EQ(p.LimitingShaftFriction, q.LimitingShaftFriction);
    EXPECT_EQ(p.LimitingBearingPressure, q.LimitingBearingPressure);
    EXPECT_EQ(p.Rs, q.Rs);
    EXPECT_EQ(p.Rb, q.Rb);
    EXPECT_EQ(p.Rl, q.Rl);
    EXPECT_EQ(p.Rt, q.Rt);
  }
}

// Model -> TMK -> read -> TMK: the two files are the same bytes and the records agree.
void RoundTrip(int increments) {
  Engine original;
  FillSampleModel(original, increments);
  original.foundation.CapStiffness = 0;  // written, but never read back (see below)
  const std::string first = Write(original, "first.tmk");

  Engine read;
  ASSERT_EQ(ReadTMWFile(read, first), 1);
  EXPECT_EQ(read.project.Version, 803);
  const std::string second = Write(read, "second.tmk");
  EXPECT_EQ(ReadBytes(first), ReadBytes(second));
  ExpectSameModel(original, read);
}

TEST(TextModelRoundTrip, NonLinearModelComesBackWhole) { RoundTrip(5); }
TEST(TextModelRoundTrip, LinearModelComesBackWhole) { RoundTrip(1); }

TEST(TextModelRoundTrip, ValuesBeyondTheFileFormsSettleAfterOneWrite) {
  // Values with more decimals than the file keeps are rounded by the first write; from
  // then on the file reproduces itself.
  Engine original;
  FillSampleModel(original, 3);
  original.foundation.CapStiffness = 0;
  Pile& pile = original.foundation.Piles(2);
  pile.Length = 17.3456f;
  pile.X = -0.0049f;
  pile.EA = 1234567.8f;
  pile.ReinforcedLength = 2.345f;
  pile.UnreinforcedEIx = 98765.43f;
  original.borehole.Layers(1).Poisson = 0.333333f;
  original.borehole.Layers(2).Ev = 12345.678f;
  original.project.Nq = 27.46f;
  original.project.LimitingShaftFriction = 149.5f;
  original.actions.X = 0.12345f;
  original.actions.Fz = 1.0e7f;

  const std::string first = Write(original, "first.tmk");
  Engine once;
  ASSERT_EQ(ReadTMWFile(once, first), 1);
  const std::string second = Write(once, "second.tmk");
  Engine twice;
  ASSERT_EQ(ReadTMWFile(twice, second), 1);
  const std::string third = Write(twice, "third.tmk");
  EXPECT_EQ(ReadBytes(first), ReadBytes(second));
  EXPECT_EQ(ReadBytes(second), ReadBytes(third));
  EXPECT_FLOAT_EQ(once.foundation.Piles(2).Length, 17.35f);
  EXPECT_FLOAT_EQ(once.project.Nq, 27.5f);
  EXPECT_FLOAT_EQ(once.project.LimitingShaftFriction, 150.0f);
  EXPECT_FLOAT_EQ(once.actions.X, 0.123f);
}

TEST(TextModelRoundTrip, CapStiffnessIsWrittenButNotReadBack) {
  // The reader takes three numbers from the counts line and drops the rest of it, so
  // the cap stiffness (which the analysis doesn't use) comes back as it stood.
  Engine original;
  FillSampleModel(original, 1);
  original.foundation.CapStiffness = 7;
  Engine read;
  read.foundation.CapStiffness = 3;
  ASSERT_EQ(ReadTMWFile(read, Write(original, "cap.tmk")), 1);
  EXPECT_EQ(read.foundation.CapStiffness, 3);
}

TEST(TextModelRoundTrip, UnreinforcedPileReadsItsPartnersAndNoLateralReadsAsNone) {
  Engine original;
  FillSampleModel(original, 2);
  original.borehole.Layers(4).HasDirectLateral = 0;
  original.borehole.Layers(4).DirectLateral = 0.0f;
  Engine read;
  ASSERT_EQ(ReadTMWFile(read, Write(original, "plain.tmk")), 1);
  const Pile& plain = read.foundation.Piles(2);
  EXPECT_EQ(plain.ReinforcedLength, 0.0f);
  EXPECT_EQ(plain.UnreinforcedEA, plain.EA);
  EXPECT_EQ(plain.UnreinforcedEIx, plain.EIx);
  EXPECT_EQ(plain.UnreinforcedEIy, plain.EIy);
  EXPECT_EQ(plain.UnreinforcedGJ, plain.GJ);
  EXPECT_EQ(read.foundation.Piles(1).UnreinforcedEA, 1200000.0f);
  EXPECT_EQ(read.borehole.Layers(4).HasDirectLateral, 0);
}

TEST(TextModelRoundTrip, LongNamesComeBackCutAtEightyColumns) {
  Engine original;
  FillSampleModel(original, 1);
  const std::string long_name(95, 'x');
  original.project.Name.assign(long_name);
  original.foundation.Piles(1).Name.assign(long_name + "y");
  const std::string path = Write(original, "long.tmk");
  EXPECT_NE(ReadBytes(path).find(long_name + "\r\n"), std::string::npos);  // written whole
  Engine read;
  ASSERT_EQ(ReadTMWFile(read, path), 1);
  EXPECT_EQ(read.project.Name.trimmed(), std::string(80, 'x'));
  EXPECT_EQ(read.foundation.Piles(1).Name.trimmed(), std::string(80, 'x'));
}

}  // namespace
}  // namespace quellon
