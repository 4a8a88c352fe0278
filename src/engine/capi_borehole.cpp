// Exported setters and getters of the borehole, its layers and their ground. The layer
// table must exist (QuellonSetBoreholeNumberOfLayers) before any per-layer setter; each
// per-layer setter checks its index first and stores nothing when it is out of range.
#include <string>

#include "engine/capi_guard.h"
#include "engine/log_echo.h"
#include "engine/model_tables.h"
#include "quellon.h"

using namespace quellon;

namespace {

// The steps every per-layer setter shares: name line, index check, store, value line.
template <class Store>
int LayerSetter(const char* name, int layer, Store&& store) {
  return ModelSetter([&](Engine& e) {
    EchoName(e, name);
    if (!LayerInRange(e, layer)) return 0;
    const std::string values = store(e.borehole.Layers(layer));
    EchoValues(e, "Layer " + Int(layer) + values);
    return 1;
  });
}

}  // namespace

extern "C" {

int QuellonSetBoreholeDepthToRigidLayer(double depth) {
  return ModelSetter([&](Engine& e) {
    EchoName(e, "SetDepthToRigidLayer...");
    e.borehole.DepthToRigidLayer = Narrow(depth);
    EchoValues(e, "Depth to rigid layer = " + Fix(e.borehole.DepthToRigidLayer, 2));
    return 1;
  });
}

int QuellonSetBoreholeOverburden(double kpa) {
  return ModelSetter([&](Engine& e) {
    EchoName(e, "SetOverburden...");
    e.borehole.Overburden = Narrow(kpa);
    EchoValues(e, "Overburden = " + Fix(e.borehole.Overburden, 2));
    return 1;
  });
}

int QuellonSetBoreholeNumberOfLayers(int n) {
  return ModelSetter([&](Engine& e) {
    EchoName(e, "SetNumberOfLayers...");
    // A count below 1 is reported but goes on: the table is made empty and the call
    // succeeds.
    if (n < 1) LogLine(e, "    Error! Number must be > 0. Value = " + Int(n));
    if (CreateLayers(e, n) == 0) return 0;
    EchoValues(e, "Set number of layers = " + Int(n));
    return 1;
  });
}

int QuellonGetBoreholeNumberOfLayers(void) {
  return Guarded([] { return static_cast<int>(TheEngine().borehole.NumberOfLayers); });
}

int QuellonSetBoreholeLayerAveraging(int averaging) {
  return ModelSetter([&](Engine& e) {
    EchoName(e, "SetLayerAveraging...");
    e.borehole.LayerAveraging = averaging;
    EchoValues(e, "Layer averaging flag = " + Int(averaging));
    return 1;
  });
}

int QuellonGetBoreholeLayerAveraging(void) {
  return Guarded([] { return static_cast<int>(TheEngine().borehole.LayerAveraging); });
}

int QuellonSetBoreholeLayerDepth(int layer, double depth_to_top) {
  return LayerSetter("SetLayerDepth...", layer, [&](Layer& l) {
    l.DepthToTop = Narrow(depth_to_top);
    return ", depth = " + Fix(l.DepthToTop, 2);
  });
}

int QuellonSetBoreholeLayerName(int layer, const char* text, int count) {
  return LayerSetter("SetLayerName...", layer, [&](Layer& l) {
    StoreText(l.Name, text, count);
    return ", name = " + std::string(l.Name.trimmed());
  });
}

int QuellonSetBoreholeLayerStiffness(int layer, double ev, double dev, double eh, double deh, double poisson) {
  return LayerSetter("SetLayerStiffness...", layer, [&](Layer& l) {
    l.Ev = Narrow(ev);
    l.dEv = Narrow(dev);
    l.Eh = Narrow(eh);
    l.dEh = Narrow(deh);
    l.Poisson = Narrow(poisson);
    return ", Ev = " + Fix(l.Ev, 1) + ", dEv = " + Fix(l.dEv, 1) + ", Eh = " + Fix(l.Eh, 1) + ", dEh = " +
           Fix(l.dEh, 1) + ", poisson = " + Fix(l.Poisson, 2);
  });
}

int QuellonSetGroundName(int layer, const char* text, int count) {
  return LayerSetter("SetGroundName...", layer, [&](Layer& l) {
    StoreText(l.GroundName, text, count);
    return ", ground name = " + std::string(l.GroundName.trimmed());
  });
}

int QuellonSetGroundType(int layer, int type) {
  return LayerSetter("SetGroundType...", layer, [&](Layer& l) {
    l.GroundType = type;
    return ", ground type = " + Int(type);
  });
}

int QuellonSetGroundMaximumSkinFriction(int layer, double kpa) {
  return LayerSetter("SetGroundMaximumSkinFriction...", layer, [&](Layer& l) {
    l.MaxSkinFriction = Narrow(kpa);
    return ", max fs = " + Fix(l.MaxSkinFriction, 2) + " kPa";
  });
}

int QuellonSetGroundMaximumBearingPressure(int layer, double kpa) {
  return LayerSetter("SetGroundMaximumBearingPressure...", layer, [&](Layer& l) {
    l.MaxBearingPressure = Narrow(kpa);
    return ", max qb = " + Fix(l.MaxBearingPressure, 2) + " kPa";
  });
}

int QuellonSetGroundWeightDensity(int layer, double kn_per_m3) {
  return LayerSetter("SetGroundWeightDensity...", layer, [&](Layer& l) {
    l.WeightDensity = Narrow(kn_per_m3);
    return ", weight density = " + Fix(l.WeightDensity, 2) + " kN/m3";
  });
}

int QuellonSetSoilAngleOfFriction(int layer, double phi_degrees) {
  return LayerSetter("SetSoilAngleOfFriction...", layer, [&](Layer& l) {
    l.phi = Narrow(phi_degrees);
    return ", phi = " + Fix(l.phi, 2) + " deg";
  });
}

int QuellonSetSoilEarthPressureCoefficient(int layer, double ks) {
  return LayerSetter("SetSoilEarthPressureCoefficient...", layer, [&](Layer& l) {
    l.Ks = Narrow(ks);
    return ", Ks = " + Fix(l.Ks, 2);
  });
}

int QuellonSetSoilDrainedInterfaceParameter(int layer, double delta_degrees) {
  return LayerSetter("SetSoilDrainedInterfaceParameter...", layer, [&](Layer& l) {
    l.delta = Narrow(delta_degrees);
    return ", delta = " + Fix(l.delta, 2);
  });
}

int QuellonSetSoilUndrainedShearStrength(int layer, double cu, double dcu) {
  return LayerSetter("SetSoilUndrainedShearStrength...", layer, [&](Layer& l) {
    l.cu = Narrow(cu);
    l.dcu = Narrow(dcu);
    return ", cu = " + Fix(l.cu, 2) + ", dcu = " + Fix(l.dcu, 2);
  });
}

int QuellonSetSoilUndrainedInterfaceParameter(int layer, double alpha) {
  return LayerSetter("SetSoilUndrainedInterfaceParameter...", layer, [&](Layer& l) {
    l.alpha = Narrow(alpha);
    return ", alpha = " + Fix(l.alpha, 2);
  });
}

int QuellonSetRockStrength(int layer, double qu_kpa) {
  return LayerSetter("SetRockStrength...", layer, [&](Layer& l) {
    l.qu = Narrow(qu_kpa);
    return ", qu = " + Fix(l.qu, 2);
  });
}

int QuellonSetRockInterfaceParameters(int layer, double k1, double k2, double k3, double k4, double k5) {
  return LayerSetter("SetRockInterfaceParameters...", layer, [&](Layer& l) {
    l.k1 = Narrow(k1);
    l.k2 = Narrow(k2);
    l.k3 = Narrow(k3);
    l.k4 = Narrow(k4);
    l.k5 = Narrow(k5);
    return ", k1 = " + Fix(l.k1, 2) + ", k2 = " + Fix(l.k2, 2) + ", k3 = " + Fix(l.k3, 2) + ", k4 = " + Fix(l.k4, 2) +
           ", k5 = " + Fix(l.k5, 2);
  });
}

}  // extern "C"
