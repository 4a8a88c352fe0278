// A model written to a TMK file, read back as a TMW file and written again gives the
// same bytes. Together with the writer's line-by-line test this pins the records read
// back to the model written.
#include <gtest/gtest.h>

#include "engine/engine.h"
#include "engine/file_units.h"
#include "files/text_model.h"
#include "text_model_test_support.h"

namespace quellon {
namespace {

using test::FillSampleModel;
using test::ReadBytes;
using test::ScratchPath;

std::string Write(Engine& e) {
  const std::string path = ScratchPath("model.tmk");
  EXPECT_EQ(CreateTMKFile(e, path), 1);
  CloseTMKFile(e);
  return path;
}

// Writes, reads back into `read` and writes again; the two files must agree.
void ExpectRoundTrip(Engine& original, Engine& read) {
  const std::string first = Write(original);
  ASSERT_EQ(ReadTMWFile(read, first), 1);
  EXPECT_EQ(ReadBytes(first), ReadBytes(Write(read)));
}

TEST(TextModelRoundTrip, LinearAndNonLinearModelsComeBackWhole) {
  for (int increments : {1, 5}) {
    Engine original;
    FillSampleModel(original, increments);
    original.foundation.CapStiffness = 0;  // not carried back (see below)
    Engine read;
    ExpectRoundTrip(original, read);
    EXPECT_EQ(read.project.Version, 803);
    EXPECT_EQ(read.project.NonLinear, original.project.NonLinear);
    EXPECT_EQ(read.project.DynamicModel, 1);
    // Stiffnesses are held in kN and kNm^2 again; a pile without reinforcement takes
    // its partners for the unreinforced section.
    EXPECT_EQ(read.foundation.Piles(1).UnreinforcedEA, 1200000.0f);
    const Pile& plain = read.foundation.Piles(2);
    EXPECT_EQ(plain.EA, 2500000.0f);
    EXPECT_EQ(plain.UnreinforcedEA, plain.EA);
    EXPECT_EQ(plain.UnreinforcedGJ, plain.GJ);
  }
}

TEST(TextModelRoundTrip, ValuesBeyondTheFileFormsSettleAfterOneWrite) {
  // The first write rounds what the file can't hold; from then on the file reproduces
  // itself, also where rounding carries (2.996 -> "3.").
  Engine original;
  FillSampleModel(original, 3);
  original.foundation.CapStiffness = 0;
  Pile& pile = original.foundation.Piles(2);
  pile.Length = 17.3456f;
  pile.X = -0.0049f;
  pile.EA = 1234567.8f;
  pile.ReinforcedLength = 2.996f;
  pile.UnreinforcedEIx = 98765.43f;
  original.borehole.Layers(1).Poisson = 0.333333f;
  original.borehole.Layers(2).Ev = 12345.678f;
  original.project.Nq = 27.46f;
  original.project.LimitingShaftFriction = 148.5f;
  original.actions.X = 0.12345f;
  original.actions.Fz = 1.0e7f;
  Engine once;
  ASSERT_EQ(ReadTMWFile(once, Write(original)), 1);
  Engine twice;
  ExpectRoundTrip(once, twice);
  EXPECT_FLOAT_EQ(once.foundation.Piles(2).Length, 17.35f);
  EXPECT_FLOAT_EQ(once.project.Nq, 27.5f);
  EXPECT_FLOAT_EQ(once.project.LimitingShaftFriction, 149.0f);
  EXPECT_FLOAT_EQ(once.actions.X, 0.123f);
}

TEST(TextModelRoundTrip, WhatTheFileDoesNotCarryBack) {
  Engine original;
  FillSampleModel(original, 2);
  original.foundation.CapStiffness = 7;  // written, but the reader drops the 4th count
  original.borehole.Layers(4).HasDirectLateral = 0;
  original.borehole.Layers(4).DirectLateral = 0.0f;
  const std::string long_name(95, 'x');
  original.project.Name.assign(long_name);
  const std::string path = Write(original);
  EXPECT_NE(ReadBytes(path).find("\r\n" + long_name + "\r\n"), std::string::npos);  // written whole

  Engine read;
  read.foundation.CapStiffness = 3;
  ASSERT_EQ(ReadTMWFile(read, path), 1);
  EXPECT_EQ(read.foundation.CapStiffness, 3);
  EXPECT_EQ(read.borehole.Layers(4).HasDirectLateral, 0);  // lateral 0 reads as none
  EXPECT_EQ(read.project.Name.trimmed(), std::string(80, 'x'));  // names come back cut at 80
}

}  // namespace
}  // namespace quellon
