// The model records: the project with its option flags, the loads on the cap, the
// borehole with its layers, and the foundation with its piles.
//
// All reals are 32-bit floats, all integers and logicals 32-bit (a logical is 0 for
// false). Tables count from 1. A freshly constructed record holds zero bits, as the
// engine does at load; the Reset routines put the reset values in force.
#pragma once

#include <cstdint>
#include <vector>

#include "engine/fixed_text.h"
#include "engine/internal_error.h"
#include "engine/pile_frame.h"
#include "quellon.h"

namespace quellon {

// Every real of the model and of the solution is a 32-bit float, written as such.
using Logical = std::int32_t;  // 0 false, anything else true

constexpr int kFlagCount = 40;

struct Project {
  QuellonCounterFn CounterCallback = nullptr;
  QuellonMessageFn MessageCallback = nullptr;
  std::int32_t Version = 0;
  FixedText<100> Name;
  FixedText<100> Description;
  std::int32_t Year = 0, Month = 0, Day = 0;
  FixedText<260> Filename;
  std::int32_t TMWUnit = 0, TMKUnit = 0, TXTUnit = 0, XMLUnit = 0, LOGUnit = 0;
  Logical NonLinear = 0;
  float Nq = 0, Rs = 0, Rb = 0, Rl = 0, Rt = 0;
  float LimitingShaftFriction = 0;
  float LimitingBearingPressure = 0;
  std::int32_t ReferencePile = 0;
  std::int32_t AutoNq = 0;
  float InteractionDistance = 0;
  std::int32_t InteractionFlag = 0;
  Logical ElasticUnloading = 0;
  Logical FlagValues[kFlagCount] = {};
  Logical DynamicModel = 0;
  Logical ExcludeTMKComments = 0;
  std::int32_t ErrorCode = 0;

  // Flags[i], i from 1 to 40.
  Logical& Flags(int i) { return FlagValues[i - 1]; }
  Logical Flags(int i) const { return FlagValues[i - 1]; }
  bool Flag(int i) const { return FlagValues[i - 1] != 0; }
};

struct Actions {
  float Fx = 0, Fy = 0, Fz = 0;
  float Mx = 0, My = 0, Mz = 0;
  float X = 0, Y = 0;
  std::int32_t NumberOfIncrements = 0;
};

enum GroundTypeCode : std::int32_t {
  kCoarseSoil = 1,
  kFineSoil = 2,
  kRock = 3,
  kDirectValues = 4,
};

struct Layer {
  FixedText<100> Name;
  FixedText<100> GroundName;
  float DepthToTop = 0;
  float Ev = 0, dEv = 0;
  float Eh = 0, dEh = 0;
  float Poisson = 0;
  std::int32_t GroundType = 0;
  float cu = 0, dcu = 0;
  float alpha = 0;
  float WeightDensity = 0;
  float phi = 0;
  float delta = 0;
  float Ks = 0;
  float qu = 0;
  float k1 = 0, k2 = 0, k3 = 0, k4 = 0, k5 = 0;
  float DirectSkinFriction = 0;
  float DirectEndBearing = 0;
  Logical HasDirectLateral = 0;
  float DirectLateral = 0;
  float MaxSkinFriction = 0;
  float MaxBearingPressure = 0;
};

struct Borehole {
  std::vector<Layer> LayerTable;  // rows 1..NumberOfLayers at [0..n-1]
  bool LayersCreated = false;     // the table exists (possibly empty)
  std::int32_t NumberOfLayers = 0;
  float DepthToRigidLayer = 0;
  float Overburden = 0;
  std::int32_t LayerAveraging = 0;

  Layer& Layers(int i) { return LayerTable[static_cast<std::size_t>(i - 1)]; }
  const Layer& Layers(int i) const { return LayerTable[static_cast<std::size_t>(i - 1)]; }
};

struct Pile {
  FixedText<100> Name;
  std::int32_t Number = 0;
  float Length = 0;
  float ShaftDiameter = 0;
  float InternalDiameter = 0;
  float BaseDiameter = 0;
  float RakeX = 0, RakeY = 0;
  float X = 0, Y = 0, Z = 0;
  float SoilEntryX = 0, SoilEntryY = 0, SoilEntryZ = 0;
  float ReinforcedLength = 0;
  float EA = 0, EIx = 0, EIy = 0, GJ = 0;
  float UnreinforcedEA = 0, UnreinforcedEIx = 0, UnreinforcedEIy = 0, UnreinforcedGJ = 0;
  float HeadFx = 0, HeadFy = 0, HeadFz = 0;
  float HeadMx = 0, HeadMy = 0, HeadMz = 0;
};

struct Foundation {
  std::int32_t NumberOfPiles = 0;
  std::int32_t NumberOfElements = 0;
  std::vector<Pile> PileTable;  // rows 1..NumberOfPiles at [0..n-1]
  bool PilesCreated = false;
  float CentreOfRotationX = 0, CentreOfRotationY = 0;
  float FreeStandingLength = 0;
  std::int32_t CapStiffness = 0;
  QuellonCentreOfRotationFn CentreOfRotationCallback = nullptr;
  // The frame of each pile, made from the piles by the group geometry at the start of a
  // run or a check ([p - 1]); what follows reads it in place of the rakes.
  std::vector<PileFrame> Frames;

  Pile& Piles(int i) { return PileTable[static_cast<std::size_t>(i - 1)]; }
  const Pile& Piles(int i) const { return PileTable[static_cast<std::size_t>(i - 1)]; }
  const PileFrame& Frame(int i) const {
    Require(i >= 1 && static_cast<std::size_t>(i) <= Frames.size(), "Foundation::Frame: no frame made for this pile");
    return Frames[static_cast<std::size_t>(i - 1)];
  }
};

}  // namespace quellon
