// The input part of the TXT report: the banner and an echo of the model, as the run
// is about to analyse it (after the soil entry points, the centre of rotation and the
// load of one increment have been worked out).
#include <cmath>
#include <string>

#include "engine/engine.h"
#include "engine/notify.h"
#include "engine/utilities.h"
#include "files/number_forms.h"
#include "files/reports.h"
#include "files/txt_common.h"

namespace quellon {

namespace {

// A report of the corrected mechanics says so in its banner, so that it can't be taken
// for one of the method as defined.
void WriteBanner(ReportOut& out, bool corrected_mechanics) {
  out.line(Repeat('*', 70));
  out.line(" Program  T O L M A R K  ");
  out.line("");
  out.line(Repeat(' ', 19) + "Analysis and design of pile groups & piled rafts ");
  out.line("");
  out.line(" Version: " + VersionText());
  out.line(std::string(" ") + kOwnershipLine1);
  out.line(std::string(" ") + kOwnershipLine2);
  if (corrected_mechanics) out.line(" Mechanics: corrected");
  out.line(Repeat('*', 70));
}

void WriteProjectBlock(const Project& pr, ReportOut& out) {
  out.line("");
  out.line(" Project name:  " + std::string(pr.Name.trimmed()));
  out.line(" Description:  " + std::string(pr.Description.trimmed()));
  out.line(" Date:  " + FormatIntPadded(pr.Year, 4) + "-" + FormatIntPadded(pr.Month, 2) + "-" +
           FormatIntPadded(pr.Day, 2));
  // The file name keeps a fixed field of 80 columns: cut when longer, padded when shorter.
  std::string name(pr.Filename.padded().substr(0, 80));
  out.line(" File name:  " + name);
}

void WriteScope(const Engine& e, ReportOut& out) {
  out.line("");
  out.line("                    ----- I N P U T -----         ");
  out.line("");
  out.line(" Scope of the problem:  Pile group with fully-rigid cap");
  out.line(" No. of piles                          =" + FormatInt(e.foundation.NumberOfPiles, 4));
  out.line(" No. of pile shaft elements per pile   =" + FormatInt(e.foundation.NumberOfElements, 4));
  if (e.project.NonLinear) {
    out.line(" Soil model                            =  NON-LINEAR");
    out.line(" No. of equal load increments          =" + FormatInt(e.actions.NumberOfIncrements, 4));
  } else {
    out.line(" Soil model                            =  LINEAR ELASTIC");
  }
}

// The rows of a table that both its count and its storage have.
int PileCount(const Foundation& f) {
  const int table = static_cast<int>(f.PileTable.size());
  return f.NumberOfPiles < table ? f.NumberOfPiles : table;
}
int LayerCount(const Borehole& b) {
  const int table = static_cast<int>(b.LayerTable.size());
  return b.NumberOfLayers < table ? b.NumberOfLayers : table;
}

void WritePileTable(const Engine& e, ReportOut& out) {
  const Foundation& f = e.foundation;
  const int P = PileCount(f);
  out.line("");
  out.line(" Pile  Length  Diam.  Diam.  Diam.  Rake Rake   X-coord     Y-coord     Z-coord");
  out.line("                      (Int)  (Base) (X)  (Y)");
  out.line("        (m)     (m)     (m)     (m)   (deg) (deg)   (m)         (m)         (m)");
  for (int p = 1; p <= P; ++p) {
    const Pile& q = f.Piles(p);
    out.line(FormatInt(q.Number, 3) + " " + FormatFix(q.Length, 7, 1) + FormatFix(q.ShaftDiameter, 9, 3) +
             FormatFix(q.InternalDiameter, 7, 3) + FormatFix(q.BaseDiameter, 7, 3) + FormatFix(q.RakeX, 5, 1) +
             FormatFix(q.RakeY, 5, 1) + "  " + FormatSci(q.X, 10, 3) + "  " + FormatSci(q.Y, 10, 3) + "  " +
             FormatSci(q.Z, 10, 3));
  }

  // Piles reinforced over part of their length show both sections; otherwise one.
  bool reinforced = false;
  for (int p = 1; p <= P; ++p) reinforced = reinforced || f.Piles(p).ReinforcedLength > 0.0f;
  out.line("");
  if (reinforced) {
    out.line(" Pile  Pile depth       Axial            Flexural          Flexural         Torsional");
    out.line("       at which          EA                EIx               EIy               GJ    ");
    out.line("       Ep changes   upper   lower     upper    lower    upper    lower    upper   lower");
    for (int p = 1; p <= P; ++p) {
      const Pile& q = f.Piles(p);
      std::string text = FormatInt(q.Number, 3) + "   " + FormatFix(q.ReinforcedLength, 5, 1) + "    ";
      for (float v : {q.EA, q.UnreinforcedEA, q.EIx, q.UnreinforcedEIx, q.EIy, q.UnreinforcedEIy, q.GJ,
                      q.UnreinforcedGJ})
        text.append(" ").append(FormatSci(v, 9, 2));
      out.line(text);
    }
  } else {
    out.line(" Pile    Axial     Flexural    Flexural    Torsional");
    out.line("          EA         EIx         EIy          GJ    ");
    for (int p = 1; p <= P; ++p) {
      const Pile& q = f.Piles(p);
      std::string text = FormatInt(q.Number, 3);
      for (float v : {q.EA, q.EIx, q.EIy, q.GJ}) text.append("  ").append(FormatSci(v, 10, 2));
      out.line(text);
    }
  }
}

void WriteGroupSettings(const Engine& e, ReportOut& out) {
  const Project& pr = e.project;
  out.line("");
  out.line(" Free-standing length of piles (same for all)=" + FormatFix(e.foundation.FreeStandingLength, 7, 3));
  if (pr.InteractionFlag == 2) {
    out.line("");
    out.line(" Limiting spacing for pile interaction       =  50*pile diameter");
  } else if (pr.InteractionFlag == 3) {
    out.line("");
    out.line(" Limiting spacing for pile interaction       =" + FormatFix(pr.InteractionDistance, 8, 3));
  }
  const float rigid = e.borehole.DepthToRigidLayer;
  if (IsZero(rigid))
    out.line(" Depth to underlying rigid layer             =  None");
  else
    out.line(" Depth to underlying rigid layer             =" + FormatFix(rigid, 8, 3));
  if (pr.NonLinear) {
    out.line(" Overburden pressure for buried raft" + Repeat(' ', 9) + "=" + FormatSci(e.borehole.Overburden, 10, 2));
    out.line(pr.ElasticUnloading ? " Elastic unloading allowance                 =  Yes"
                                 : " Elastic unloading allowance                 =  No");
  }
  if (e.borehole.LayerAveraging == 1)
    out.line(" Treatment of layered soil                   =  Poulos (1979)");
  else if (e.borehole.LayerAveraging == 2)
    out.line(" Treatment of layered soil                   =  Yamashita et al (1987)");
}

void WriteLayerTable(const Engine& e, ReportOut& out) {
  out.line("");
  out.line(" Layer  Depth   Soil mod. Gradient of  Soil mod.  Gradient of  Poisson");
  out.line("        to top  at top    soil mod.    at top     soil mod.    ratio");
  out.line("                (axial)   with depth   (lateral)  with depth");
  out.line("                          (axial)                 (lateral)");
  for (int i = 1; i <= LayerCount(e.borehole); ++i) {
    const Layer& l = e.borehole.Layers(i);
    out.line(FormatInt(i, 3) + "    " + FormatFix(l.DepthToTop, 5, 1) + "  " + FormatFrac(l.Ev, 10, 2) +
             FormatFrac(l.dEv, 10, 2) + "   " + FormatFrac(l.Eh, 10, 2) + " " + FormatFrac(l.dEh, 10, 2) + "   " +
             FormatFix(l.Poisson, 6, 2));
  }
}

// A strength cap of the layer, or "None" when it is not above 1e-20.
std::string CapLine(const char* text, float cap) {
  if (IsPositive(cap)) return text + FormatFix(cap, 6, 1) + " kPa";
  return std::string(text) + "None";
}

void WriteGroundBlock(const Layer& l, int index, ReportOut& out) {
  out.line("");
  out.line(" Layer = " + FormatInt(index, 4));
  out.line(" Depth to top = " + FormatFix(l.DepthToTop, 6, 1) + " m");
  switch (l.GroundType) {
    case kCoarseSoil:
      out.line(" Type of soil = Coarse soil (cohesionless)");
      out.line(" Unit weight of soil = " + FormatFix(l.WeightDensity, 6, 1) + " kN/m3");
      out.line(" Angle of shearing resistance = " + FormatFix(l.phi, 6, 1) + " deg");
      out.line(" Pile/soil interface friction = " + FormatFix(l.delta, 6, 1) + " deg");
      out.line(" Coeff. of horizontal soil stress (Ks) = " + FormatFix(l.Ks, 6, 2));
      break;
    case kFineSoil:
      out.line(" Type of soil = Fine soil (cohesive)");
      out.line(" Unit weight of soil = " + FormatFix(l.WeightDensity, 6, 1) + " kN/m3");
      out.line(" Undrained shear strength at top = " + FormatFix(l.cu, 6, 1) + " kPa");
      out.line(" Gradient of undrained shear strength = " + FormatFix(l.dcu, 6, 1) + " kN/m3");
      out.line(" Adhesion factor = " + FormatFix(l.alpha, 6, 2));
      break;
    case kRock:
      out.line(" Type = Rock");
      out.line(" Effective weight density = " + FormatFix(l.WeightDensity, 6, 1) + " kN/m3");
      // The strength is held in kPa and shown in MPa.
      out.line(" Unconfined compressive strength (UCS) = " + FormatFix(l.qu / 1000.0f, 6, 1) + " MPa");
      out.line(" Rock interface factor (k1) = " + FormatFix(l.k1, 6, 2));
      out.line(" Rock interface power (k2) = " + FormatFix(l.k2, 6, 2));
      out.line(" Rock bearing factor (k3) = " + FormatFix(l.k3, 6, 2));
      out.line(" Rock bearing power (k4) = " + FormatFix(l.k4, 6, 2));
      out.line(" Rock lateral factor (k5) = " + FormatFix(l.k5, 6, 2));
      break;
    case kDirectValues:
      out.line(" Type = Direct values");
      out.line(" Effective weight density = " + FormatFix(l.WeightDensity, 6, 1) + " kN/m3");
      out.line(" Pile skin friction = " + FormatFix(l.DirectSkinFriction, 6, 1) + " kPa");
      out.line(" Pile end bearing = " + FormatFix(l.DirectEndBearing, 6, 0) + " kPa");
      if (l.HasDirectLateral) out.line(" Pile lateral capacity = " + FormatFix(l.DirectLateral, 6, 0) + " kPa");
      break;
    default:
      // A ground type outside 1 to 4 has no strength fields to show.
      break;
  }
  out.line(CapLine(" Max value of pile skin friction = ", l.MaxSkinFriction));
  out.line(CapLine(" Max value of pile base capacity = ", l.MaxBearingPressure));
}

void WriteGroundStrength(const Engine& e, ReportOut& out) {
  const Project& pr = e.project;
  const int layers = LayerCount(e.borehole);
  for (int i = 1; i <= layers; ++i) WriteGroundBlock(e.borehole.Layers(i), i, out);
  // The manual factor matters only where the bearing capacity comes from a coarse soil,
  // and the toes stand in the last layer.
  if (layers >= 1 && e.borehole.Layers(layers).GroundType == kCoarseSoil && pr.AutoNq != 1) {
    out.line("");
    out.line(" Manual bearing capacity factor Nq      =" + FormatFix(pr.Nq, 6, 1));
  }
  out.line("");
  out.line(" Hyperbolic constant (pile shaft)  =" + FormatFix(pr.Rs, 13, 2));
  out.line(" Hyperbolic constant (pile base)   =" + FormatFix(pr.Rb, 13, 2));
  out.line(" Hyperbolic constant (pile lateral)=" + FormatFix(pr.Rl, 13, 2));
  out.line(" Hyperbolic constant (pile torsion)=" + FormatFix(pr.Rt, 13, 2));
}

void WriteLoads(const Engine& e, ReportOut& out) {
  const Actions& a = e.actions;
  out.line("");
  out.line(" TOTAL APPLIED LOADS ON RAFT:");
  out.line(" Vertical Load              =" + FormatFix(a.Fz, 12, 1));
  out.line(" Horizontal Load in X-dir   =" + FormatFix(a.Fx, 12, 1));
  out.line(" Moment in XZ plane         =" + FormatFix(a.My, 12, 1));
  out.line(" Horizontal Load in Y-dir   =" + FormatFix(a.Fy, 12, 1));
  out.line(" Moment in YZ plane         =" + FormatFix(a.Mx, 12, 1));
  out.line(" X-coord of Vertical Load   =" + FormatFix(a.X, 13, 2));
  out.line(" Y-coord of Vertical Load   =" + FormatFix(a.Y, 13, 2));
  out.line(" Torque in XY plane         =" + FormatFix(a.Mz, 12, 1));
  out.line("");

  out.line("");
  out.line("                   ----- O U T P U T -----     ");
  if (e.project.Flag(7)) {
    // The load of one increment, in the internal order of the cap.
    static constexpr const char* kTexts[6] = {
        " Vertical Load              =", " Horizontal Load in X-dir   =", " Moment in XZ plane         =",
        " Horizontal Load in Y-dir   =", " Moment in YZ plane         =", " Torque in XY plane         ="};
    out.line(" INCREMENTAL APPLIED LOADS ON CAP:");
    for (int i = 1; i <= 6; ++i) out.line(kTexts[i - 1] + FormatFix(ValueOr0(e.ws.CapLoadInc, i), 12, 1));
    out.line("");
  }
  out.line("");
  out.line(" X-coord of assumed group centre of rotation =" + FormatFix(e.foundation.CentreOfRotationX, 8, 3));
  out.line(" Y-coord of assumed group centre of rotation =" + FormatFix(e.foundation.CentreOfRotationY, 8, 3));
}

}  // namespace

void WriteTXTInput(Engine& e) {
  if (!TXTOpen(e)) return;
  SendInfo(e, "Writing input data to TXT output file...");
  ReportOut out = TXTOut(e);
  WriteBanner(out, e.corrected_mechanics);
  if (e.project.Flag(2)) WriteProjectBlock(e.project, out);
  WriteScope(e, out);
  WritePileTable(e, out);
  WriteGroupSettings(e, out);
  WriteLayerTable(e, out);
  if (e.project.NonLinear) WriteGroundStrength(e, out);
  WriteLoads(e, out);
  SendInfo(e, "Finished writing input data to TXT output file");
}

}  // namespace quellon
