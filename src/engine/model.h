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
#include "quellon.h"

namespace quellon {

using Real = float;           // the precision of the whole solution
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
  Real Nq = 0, Rs = 0, Rb = 0, Rl = 0, Rt = 0;
  Real LimitingShaftFriction = 0;
  Real LimitingBearingPressure = 0;
  std::int32_t ReferencePile = 0;
  std::int32_t AutoNq = 0;
  Real InteractionDistance = 0;
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
  Real Fx = 0, Fy = 0, Fz = 0;
  Real Mx = 0, My = 0, Mz = 0;
  Real X = 0, Y = 0;
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
  Real DepthToTop = 0;
  Real Ev = 0, dEv = 0;
  Real Eh = 0, dEh = 0;
  Real Poisson = 0;
  std::int32_t GroundType = 0;
  Real cu = 0, dcu = 0;
  Real alpha = 0;
  Real WeightDensity = 0;
  Real phi = 0;
  Real delta = 0;
  Real Ks = 0;
  Real qu = 0;
  Real k1 = 0, k2 = 0, k3 = 0, k4 = 0, k5 = 0;
  Real DirectSkinFriction = 0;
  Real DirectEndBearing = 0;
  Logical HasDirectLateral = 0;
  Real DirectLateral = 0;
  Real MaxSkinFriction = 0;
  Real MaxBearingPressure = 0;
};

struct Borehole {
  std::vector<Layer> LayerTable;  // rows 1..NumberOfLayers at [0..n-1]
  bool LayersCreated = false;     // the table exists (possibly empty)
  std::int32_t NumberOfLayers = 0;
  Real DepthToRigidLayer = 0;
  Real Overburden = 0;
  std::int32_t LayerAveraging = 0;

  Layer& Layers(int i) { return LayerTable[static_cast<std::size_t>(i - 1)]; }
  const Layer& Layers(int i) const { return LayerTable[static_cast<std::size_t>(i - 1)]; }
};

struct Pile {
  FixedText<100> Name;
  std::int32_t Number = 0;
  Real Length = 0;
  Real ShaftDiameter = 0;
  Real InternalDiameter = 0;
  Real BaseDiameter = 0;
  Real RakeX = 0, RakeY = 0;
  Real X = 0, Y = 0, Z = 0;
  Real SoilEntryX = 0, SoilEntryY = 0, SoilEntryZ = 0;
  Real ReinforcedLength = 0;
  Real EA = 0, EIx = 0, EIy = 0, GJ = 0;
  Real UnreinforcedEA = 0, UnreinforcedEIx = 0, UnreinforcedEIy = 0, UnreinforcedGJ = 0;
  Real HeadFx = 0, HeadFy = 0, HeadFz = 0;
  Real HeadMx = 0, HeadMy = 0, HeadMz = 0;
};

struct Foundation {
  std::int32_t NumberOfPiles = 0;
  std::int32_t NumberOfElements = 0;
  std::vector<Pile> PileTable;  // rows 1..NumberOfPiles at [0..n-1]
  bool PilesCreated = false;
  Real CentreOfRotationX = 0, CentreOfRotationY = 0;
  Real FreeStandingLength = 0;
  std::int32_t CapStiffness = 0;
  QuellonCentreOfRotationFn CentreOfRotationCallback = nullptr;

  Pile& Piles(int i) { return PileTable[static_cast<std::size_t>(i - 1)]; }
  const Pile& Piles(int i) const { return PileTable[static_cast<std::size_t>(i - 1)]; }
};

}  // namespace quellon
