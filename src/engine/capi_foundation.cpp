// Exported setters of the foundation and its piles. The pile table must exist
// (QuellonSetNumberOfPiles) before any per-pile setter; each per-pile setter checks its
// index first and stores nothing when it is out of range.
#include <string>

#include "engine/capi_guard.h"
#include "engine/log_echo.h"
#include "engine/model_tables.h"
#include "quellon.h"

using namespace quellon;

namespace {

// The steps every per-pile setter shares: name line, index check, then the store and
// its value lines, which the body writes.
template <class Store>
int PileSetter(const char* name, int pile, Store&& store) {
  return ModelSetter([&](Engine& e) {
    EchoName(e, name);
    if (!PileInRange(e, pile)) return 0;
    store(e, e.foundation.Piles(pile), "Pile " + Int(pile));
    return 1;
  });
}

// Section stiffnesses arrive in MN and MNm^2; the engine holds kN and kNm^2. The
// product is taken in double precision before the narrowing.
float FromMega(double v) { return static_cast<float>(v * 1000.0); }

}  // namespace

extern "C" {

int QuellonSetNumberOfPiles(int n) {
  return ModelSetter([&](Engine& e) {
    EchoName(e, "SetNumberOfPiles...");
    if (CreatePiles(e, n) == 0) return 0;
    EchoValues(e, "Number of piles = " + Int(n));
    return 1;
  });
}

int QuellonSetNumberOfPileElements(int n) {
  return ModelSetter([&](Engine& e) {
    EchoName(e, "SetNumberOfPileElements...");
    e.foundation.NumberOfElements = n;
    EchoValues(e, "Number of pile elements = " + Int(n));
    return 1;
  });
}

int QuellonSetPileInteractionFlag(signed char flag) {
  return ModelSetter([&](Engine& e) {
    EchoName(e, "SetPileInteractionFlag...");
    e.project.InteractionFlag = flag;
    EchoValues(e, "Pile interaction flag = " + Int(e.project.InteractionFlag));
    return 1;
  });
}

int QuellonSetPileInteractionDistance(double distance) {
  return ModelSetter([&](Engine& e) {
    EchoName(e, "SetPileInteractionDistance...");
    e.project.InteractionDistance = Narrow(distance);
    e.project.InteractionFlag = 3;  // a distance given means the custom limit
    EchoValues(e, "Distance = " + Fix(e.project.InteractionDistance, 2));
    return 1;
  });
}

int QuellonSetPileCoordinates(int pile, double x, double y, double z) {
  return PileSetter("SetPileCoordinates...", pile, [&](Engine& e, Pile& p, const std::string& head) {
    p.X = Narrow(x);
    p.Y = Narrow(y);
    p.Z = Narrow(z);
    EchoValues(e, head + " coordinates = " + Fix(p.X, 2) + ", " + Fix(p.Y, 2) + ", " + Fix(p.Z, 2));
  });
}

int QuellonSetPileDimensions(int pile, double length, double shaft_diameter, double internal_diameter,
                             double base_diameter) {
  return PileSetter("SetPileDimensions...", pile, [&](Engine& e, Pile& p, const std::string& head) {
    p.Length = Narrow(length);
    p.ShaftDiameter = Narrow(shaft_diameter);
    p.InternalDiameter = Narrow(internal_diameter);
    p.BaseDiameter = Narrow(base_diameter);
    EchoValues(e, head + ", L = " + Fix(p.Length, 2) + ", Ds = " + Fix(p.ShaftDiameter, 2) + ", Di = " +
                      Fix(p.InternalDiameter, 2) + ", Db = " + Fix(p.BaseDiameter, 2));
  });
}

int QuellonSetPileHeadLoads(int pile, double fx, double fy, double fz, double mx, double my, double mz) {
  return PileSetter("SetPileHeadLoads...", pile, [&](Engine& e, Pile& p, const std::string& head) {
    p.HeadFx = Narrow(fx);
    p.HeadFy = Narrow(fy);
    p.HeadFz = Narrow(fz);
    p.HeadMx = Narrow(mx);
    p.HeadMy = Narrow(my);
    p.HeadMz = Narrow(mz);
    EchoValues(e, head + " Fx = " + Fix(p.HeadFx, 2) + ", Fy = " + Fix(p.HeadFy, 2) + ", Fz = " + Fix(p.HeadFz, 2));
    EchoValues(e, head + " Mx = " + Fix(p.HeadMx, 2) + ", My = " + Fix(p.HeadMy, 2) + ", Mz = " + Fix(p.HeadMz, 2));
  });
}

int QuellonSetPileName(int pile, const char* text, int count) {
  return PileSetter("SetPileName...", pile, [&](Engine& e, Pile& p, const std::string& head) {
    StoreText(p.Name, text, count);
    EchoValues(e, head + ", name = " + std::string(p.Name.trimmed()));
  });
}

int QuellonSetPileRake(int pile, double rake_x, double rake_y) {
  return PileSetter("SetPileRake...", pile, [&](Engine& e, Pile& p, const std::string& head) {
    p.RakeX = Narrow(rake_x);  // degrees, as given
    p.RakeY = Narrow(rake_y);
    EchoValues(e, head + ", rake X = " + Fix(p.RakeX, 2) + ", rake Y = " + Fix(p.RakeY, 2));
  });
}

int QuellonSetPileReinforcedSectionProperties(int pile, double length, double ea, double eix, double eiy,
                                              double gj) {
  return PileSetter("SetPileReinforcedSectionProperties...", pile,
                    [&](Engine& e, Pile& p, const std::string& head) {
                      p.ReinforcedLength = Narrow(length);
                      p.EA = FromMega(ea);
                      p.EIx = FromMega(eix);
                      p.EIy = FromMega(eiy);
                      p.GJ = FromMega(gj);
                      EchoValues(e, head + ", length = " + Fix(p.ReinforcedLength, 2) + ", EA = " + Fix(p.EA, 2) +
                                        ", EIx = " + Fix(p.EIx, 2) + ", EIy = " + Fix(p.EIy, 2) +
                                        ", GJ = " + Fix(p.GJ, 2));
                    });
}

int QuellonSetPileUnreinforcedSectionProperties(int pile, double ea, double eix, double eiy, double gj) {
  return PileSetter("SetPileSectionProperties...", pile, [&](Engine& e, Pile& p, const std::string& head) {
    p.UnreinforcedEA = FromMega(ea);
    p.UnreinforcedEIx = FromMega(eix);
    p.UnreinforcedEIy = FromMega(eiy);
    p.UnreinforcedGJ = FromMega(gj);
    EchoValues(e, head + ", EA = " + Fix(p.UnreinforcedEA, 2) + ", EIx = " + Fix(p.UnreinforcedEIx, 2) +
                      ", EIy = " + Fix(p.UnreinforcedEIy, 2) + ", GJ = " + Fix(p.UnreinforcedGJ, 2));
  });
}

int QuellonSetPileCapStiffness(int stiffness) {
  return ModelSetter([&](Engine& e) {
    EchoName(e, "SetPileCapStiffness...");
    e.foundation.CapStiffness = stiffness;
    EchoValues(e, "Pile cap stiffness = " + Int(stiffness));
    return 1;
  });
}

int QuellonSetPileFreeStandingLength(double length) {
  return ModelSetter([&](Engine& e) {
    EchoName(e, "SetPileFreeStandingLength...");
    e.foundation.FreeStandingLength = Narrow(length);
    EchoValues(e, "Free-standing length = " + Fix(e.foundation.FreeStandingLength, 2));
    return 1;
  });
}

}  // extern "C"
