// The XML document around the results: its header, the echo of the input, and the
// start and end of the output element.
#include <algorithm>
#include <cstdio>
#include <string>

#include "engine/engine.h"
#include "engine/notify.h"
#include "engine/utilities.h"
#include "files/reports.h"
#include "files/xml_document.h"
#include "files/xml_writing.h"

namespace quellon {

namespace {

constexpr int kWritingXMLMessageId = 9;  // "Writing output to XML file"

std::string Element(std::string_view tag, std::string_view content) {
  std::string s;
  s.reserve(2 * tag.size() + content.size() + 5);
  s.append("<").append(tag).append(">").append(content).append("</").append(tag).append(">");
  return s;
}

std::string DateText(const Project& p) {
  char buf[64];
  std::snprintf(buf, sizeof buf, "%04d-%02d-%02d", p.Year, p.Month, p.Day);
  return buf;
}

const char* SoilType(int ground_type) {
  switch (ground_type) {
    case kFineSoil: return "Cohesive";
    case kCoarseSoil: return "Cohesionless";
    case kRock: return "Rock";
    default: return "Generic";
  }
}

void WritePileInput(TextFile& out, const Foundation& fd, int p, float& tol) {
  const Pile& pile = fd.Piles(p);
  WriteXMLLine(out, 12, "<Pile number=\"" + XMLInteger(p) + "\">");
  WriteXMLLine(out, 16, Element("Name", XMLText(pile.Name.trimmed())));
  WriteXMLValue(out, 16, "EmbeddedLength", pile.Length, "m", tol);
  WriteXMLValue(out, 16, "FreeStandingLength", fd.FreeStandingLength, "m", tol);
  WriteXMLValue(out, 16, "ExternalDiameter", pile.ShaftDiameter, "m", tol);
  WriteXMLValue(out, 16, "InternalDiameter", pile.InternalDiameter, "m", tol);
  WriteXMLValue(out, 16, "BaseDiameter", pile.BaseDiameter, "m", tol);
  WriteXMLValue(out, 16, "XRake", pile.RakeX, "deg", tol);
  WriteXMLValue(out, 16, "YRake", pile.RakeY, "deg", tol);
  WriteXMLValue(out, 16, "XPosition", pile.X, "m", tol);
  WriteXMLValue(out, 16, "YPosition", pile.Y, "m", tol);
  WriteXMLValue(out, 16, "ZPosition", pile.Z, "m", tol);
  tol = 0.001f;
  WriteXMLValue(out, 16, "AxialStiffness", pile.EA, "kN", tol);
  WriteXMLValue(out, 16, "FlexuralStiffnessX", pile.EIx, "kNm^2", tol);
  WriteXMLValue(out, 16, "FlexuralStiffnessY", pile.EIy, "kNm^2", tol);
  WriteXMLValue(out, 16, "TorsionalStiffness", pile.GJ, "kNm^2", tol);
  if (pile.ReinforcedLength > 0.0f) {
    WriteXMLValue(out, 16, "ReinforcedLength", pile.ReinforcedLength, "m", tol);
    WriteXMLValue(out, 16, "UnreinforcedAxialStiffness", pile.UnreinforcedEA, "kN", tol);
    WriteXMLValue(out, 16, "UnreinforcedFlexuralStiffnessX", pile.UnreinforcedEIx, "kNm^2", tol);
    WriteXMLValue(out, 16, "UnreinforcedFlexuralStiffnessY", pile.UnreinforcedEIy, "kNm^2", tol);
    WriteXMLValue(out, 16, "UnreinforcedTorsionalStiffness", pile.UnreinforcedGJ, "kNm^2", tol);
  }
  WriteXMLLine(out, 12, "</Pile>");
}

void WriteGroundInput(TextFile& out, const Layer& l, float tol) {
  switch (l.GroundType) {
    case kCoarseSoil:
      WriteXMLValue(out, 20, "AngleOfShearingResistance", l.phi, "deg", tol);
      WriteXMLValue(out, 20, "InterfaceFriction", l.delta, "deg", tol);
      WriteXMLValue(out, 20, "Ks", l.Ks, {}, tol);
      break;
    case kFineSoil:
      WriteXMLLine(out, 20, "<UndrainedShearStrength>");
      WriteXMLValue(out, 24, "Initial", l.cu, "kPa", tol);
      WriteXMLValue(out, 24, "Gradient", l.dcu, "kN/m^3", tol);
      WriteXMLLine(out, 20, "</UndrainedShearStrength>");
      WriteXMLValue(out, 20, "AdhesionFactor", l.alpha, {}, tol);
      break;
    case kRock:
      WriteXMLValue(out, 20, "UCS", l.qu, "kPa", tol);
      WriteXMLValue(out, 20, "k1", l.k1, {}, tol);
      WriteXMLValue(out, 20, "k2", l.k2, {}, tol);
      WriteXMLValue(out, 20, "k3", l.k3, {}, tol);
      WriteXMLValue(out, 20, "k4", l.k4, {}, tol);
      WriteXMLValue(out, 20, "k5", l.k5, {}, tol);
      break;
    case kDirectValues:
      WriteXMLValue(out, 20, "CustomShaftResistance", l.DirectSkinFriction, "kPa", tol);
      WriteXMLValue(out, 20, "CustomBaseResistance", l.DirectEndBearing, "kPa", tol);
      if (l.HasDirectLateral) WriteXMLValue(out, 20, "CustomLateralResistance", l.DirectLateral, "kPa", tol);
      break;
    default:
      break;
  }
}

void WriteLayerInput(TextFile& out, const Layer& l, int i, bool nonlinear, float& tol) {
  WriteXMLLine(out, 12, "<Layer number=\"" + XMLInteger(i) + "\">");
  WriteXMLLine(out, 16, Element("Name", XMLText(l.Name.trimmed())));
  WriteXMLValue(out, 16, "Depth", l.DepthToTop, "m", tol);
  tol = 0.001f;
  WriteXMLLine(out, 16, "<VerticalYoungsModulus>");
  WriteXMLValue(out, 20, "Initial", l.Ev, "kPa", tol);
  WriteXMLValue(out, 20, "Gradient", l.dEv, "kN/m^3", tol);
  WriteXMLLine(out, 16, "</VerticalYoungsModulus>");
  WriteXMLLine(out, 16, "<HorizontalYoungsModulus>");
  WriteXMLValue(out, 20, "Initial", l.Eh, "kPa", tol);
  WriteXMLValue(out, 20, "Gradient", l.dEh, "kN/m^3", tol);
  WriteXMLLine(out, 16, "</HorizontalYoungsModulus>");
  WriteXMLValue(out, 16, "PoissonsRatio", l.Poisson, {}, tol);
  if (nonlinear) {
    WriteXMLLine(out, 16, std::string("<Soil type=\"") + SoilType(l.GroundType) + "\">");
    tol = 0.01f;
    WriteXMLLine(out, 20, Element("Name", XMLText(l.GroundName.trimmed())));
    WriteXMLValue(out, 20, "EffectiveWeightDensity", l.WeightDensity, "kN/m^3", tol);
    WriteGroundInput(out, l, tol);
    if (IsPositive(l.MaxSkinFriction)) WriteXMLValue(out, 20, "MaxUnitShaftResistance", l.MaxSkinFriction, "kPa", tol);
    if (IsPositive(l.MaxBearingPressure)) {
      WriteXMLValue(out, 20, "MaxUnitBaseResistance", l.MaxBearingPressure, "kPa", tol);
    }
    WriteXMLLine(out, 16, "</Soil>");
  }
  WriteXMLLine(out, 12, "</Layer>");
}

}  // namespace

void WriteXMLHeader(Engine& e) {
  TextFile* out = XMLOutput(e);
  if (out == nullptr) return;
  SendInfo(e, "Writing data to XML output file...");
  PostWindowMessage(e, kWritingXMLMessageId);
  XMLDocument(e) = XMLDocumentState{};
  out->line("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>");
  out->line("<!--Tolmark XML Output File-->");
  out->line(std::string("<!--") + kOwnershipLine1 + "-->");
  out->line(std::string("<!--") + kOwnershipLine2 + "-->");
  out->line("<!--File Output.xml-->");
  // A document of the corrected mechanics says so on its root element.
  out->line("<Tolmark version=\"" + VersionText() + "\"" +
            (e.corrected_mechanics ? " mechanics=\"corrected\"" : "") +
            " xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\""
            " xsi:noNamespaceSchemaLocation=\"https://www.quellonengine.org/xml-schemas/Tolmark.xsd\">");
}

void WriteXMLLoadLines(TextFile& out, int indent, const Actions& ac) {
  float tol = 0.001f;
  WriteXMLValue(out, indent, "Force axis=\"X\"", ac.Fx, "kN", tol);
  WriteXMLValue(out, indent, "Force axis=\"Y\"", ac.Fy, "kN", tol);
  WriteXMLValue(out, indent, "Force axis=\"Z\"", ac.Fz, "kN", tol);
  WriteXMLValue(out, indent, "Moment axis=\"X\"", ac.Mx, "kNm", tol);
  WriteXMLValue(out, indent, "Moment axis=\"Y\"", ac.My, "kNm", tol);
  WriteXMLValue(out, indent, "Moment axis=\"Z\"", ac.Mz, "kNm", tol);
  tol = 0.01f;
  WriteXMLValue(out, indent, "Position axis=\"X\"", ac.X, "m", tol);
  WriteXMLValue(out, indent, "Position axis=\"Y\"", ac.Y, "m", tol);
}

void WriteXMLInput(Engine& e) {
  TextFile* out = XMLOutput(e);
  if (out == nullptr) return;
  WriteXMLInputEcho(e, *out);
}

void WriteXMLInputEcho(const Engine& e, TextFile& output) {
  TextFile* out = &output;
  const Project& pr = e.project;
  const Foundation& fd = e.foundation;
  const Borehole& bh = e.borehole;
  const Actions& ac = e.actions;
  const bool nonlinear = pr.NonLinear != 0;
  // The tolerance in force: each change holds for the lines after it, across piles and
  // layers, until the next.
  float tol = 0.0f;

  WriteXMLLine(*out, 4, "<Input>");
  if (pr.Flag(2)) {
    WriteXMLLine(*out, 8, "<Project>");
    WriteXMLLine(*out, 12, Element("Name", XMLText(pr.Name.trimmed())));
    WriteXMLLine(*out, 12, Element("Description", XMLText(pr.Description.trimmed())));
    WriteXMLLine(*out, 12, Element("Date", DateText(pr)));
    WriteXMLLine(*out, 12, Element("Filename", XMLText(pr.Filename.trimmed())));
    WriteXMLLine(*out, 8, "</Project>");
  }
  WriteXMLLine(*out, 8, nonlinear ? "<Comment>3D Non-Linear</Comment>" : "<Comment>3D Linear</Comment>");
  WriteXMLLine(*out, 8, Element("Dimensions", pr.Flag(1) ? "3" : "2"));
  WriteXMLLine(*out, 8, nonlinear ? "<NonLinear>1</NonLinear>" : "<NonLinear>0</NonLinear>");
  std::string flags;
  for (int i = 1; i <= kFlagCount; ++i) flags += pr.Flag(i) ? '1' : '0';
  WriteXMLLine(*out, 8, Element("Flags", flags));

  WriteXMLLine(*out, 8, "<Piles>");
  WriteXMLLine(*out, 12, Element("Elements", XMLInteger(fd.NumberOfElements)));
  if (pr.InteractionFlag == 3) {
    tol = 0.01f;
    WriteXMLValue(*out, 12, "MaxInteractionDistance", pr.InteractionDistance, {}, tol);
  }
  const int piles = std::min<int>(fd.NumberOfPiles, static_cast<int>(fd.PileTable.size()));
  for (int p = 1; p <= piles; ++p) WritePileInput(*out, fd, p, tol);
  WriteXMLLine(*out, 8, "</Piles>");

  WriteXMLLine(*out, 8, "<Layers>");
  tol = 0.01f;
  WriteXMLValue(*out, 12, "DepthToRigidBase", bh.DepthToRigidLayer, "m", tol);
  if (nonlinear) {
    WriteXMLValue(*out, 12, "OverburdenPressure", bh.Overburden, "kPa", tol);
    WriteXMLFlag(*out, 12, "ElasticUnloading", pr.ElasticUnloading != 0);
  }
  WriteXMLLine(*out, 12, bh.LayerAveraging == 2 ? "<LayerAveraging type =\"Yamashita\"/>"
                                                : "<LayerAveraging type =\"Poulos\"/>");
  const int layers = std::min<int>(bh.NumberOfLayers, static_cast<int>(bh.LayerTable.size()));
  for (int i = 1; i <= layers; ++i) WriteLayerInput(*out, bh.Layers(i), i, nonlinear, tol);
  WriteXMLLine(*out, 8, "</Layers>");
  tol = 0.01f;

  if (nonlinear && layers > 0 && bh.Layers(layers).GroundType == kCoarseSoil && pr.AutoNq != 1) {
    WriteXMLValue(*out, 8, "BearingCapacityFactor", pr.Nq, {}, tol);
  }
  const bool shaft_limit = IsPositive(pr.LimitingShaftFriction);
  const bool base_limit = IsPositive(pr.LimitingBearingPressure);
  if (nonlinear && (shaft_limit || base_limit)) {
    WriteXMLLine(*out, 8, "<LimitingStresses>");
    if (shaft_limit) WriteXMLValue(*out, 12, "MaxUnitShaftResistance", pr.LimitingShaftFriction, "kPa", tol);
    if (base_limit) WriteXMLValue(*out, 12, "MaxUnitBaseResistance", pr.LimitingBearingPressure, "kPa", tol);
    WriteXMLLine(*out, 8, "</LimitingStresses>");
  }
  if (nonlinear) {
    WriteXMLLine(*out, 8, "<HyperbolicConstants>");
    WriteXMLValue(*out, 12, "Shaft", pr.Rs, {}, tol);
    WriteXMLValue(*out, 12, "Base", pr.Rb, {}, tol);
    WriteXMLValue(*out, 12, "Lateral", pr.Rl, {}, tol);
    WriteXMLValue(*out, 12, "Torsion", pr.Rt, {}, tol);
    WriteXMLLine(*out, 8, "</HyperbolicConstants>");
  }

  WriteXMLLine(*out, 8, "<Loads>");
  WriteXMLLoadLines(*out, 12, ac);
  if (nonlinear) WriteXMLLine(*out, 12, Element("Increments", XMLInteger(ac.NumberOfIncrements)));
  WriteXMLLine(*out, 8, "</Loads>");
  WriteXMLLine(*out, 4, "</Input>");
}

void WriteXMLOutputStart(Engine& e) {
  TextFile* out = XMLOutput(e);
  if (out == nullptr) return;
  const std::string n = XMLInteger(e.actions.NumberOfIncrements);
  WriteXMLLine(*out, 4, "<Output>");
  WriteXMLLine(*out, 8, "<No-Of-Increments number=\"" + n + "\"/>");
  // One element for the run, numbered by its last increment: with the usual flags the
  // full report of that increment lands in it.
  WriteXMLLine(*out, 8, "<Increment number=\"" + n + "\">");
  XMLDocument(e).increment_open = true;
}

void WriteXMLOutputEnd(Engine& e) {
  TextFile* out = XMLOutput(e);
  if (out == nullptr) return;
  // Whatever the flags left open is closed here, so that a finished run always leaves a
  // well-formed document.
  XMLDocumentState& doc = XMLDocument(e);
  if (doc.pile_group_open) WriteXMLLine(*out, 12, "</Pile-Group>");
  if (doc.increment_open) WriteXMLLine(*out, 8, "</Increment>");
  WriteXMLLine(*out, 4, "</Output>");
  out->line("</Tolmark>");
  out->flush();
  ForgetXMLDocument(e);
  SendInfo(e, "Finished writing data to XML output file");
}

}  // namespace quellon
