#include <algorithm>
#include <cstdio>
#include <string>

#include "engine/file_units.h"
#include "engine/engine.h"
#include "engine/fixed_text.h"
#include "engine/notify.h"
#include "engine/utilities.h"
#include "files/number_forms.h"
#include "files/text_model.h"
#include "files/text_model_numbers.h"

namespace quellon {

namespace {

TextFile* WritableUnit(Engine& e, int unit) {
  TextFile* f = nullptr;
  switch (unit) {
    case kTMKUnit: f = &e.files.tmk; break;
    case kXMLUnit: f = &e.files.xml; break;
    case kTXTUnit: f = &e.files.txt; break;
    case kLOGUnit: f = &e.files.log; break;
    default: break;
  }
  return f != nullptr && f->is_open() ? f : nullptr;
}

// Fields of a value line, one blank between.
class Fields {
 public:
  Fields& operator<<(const std::string& field) {
    if (!text_.empty()) text_ += ' ';
    text_ += field;
    return *this;
  }
  const std::string& str() const { return text_; }

 private:
  std::string text_;
};

std::string DateText(const Project& p) {
  char buf[64];
  std::snprintf(buf, sizeof buf, "%04d-%02d-%02d", p.Year, p.Month, p.Day);
  return buf;
}

std::string FlagDigits(const Project& p) {
  std::string s;
  for (int i = 1; i <= kFlagCount; ++i) s += p.Flag(i) ? '1' : '0';
  return s;
}

std::string PileValues(int position, const Pile& p) {
  Fields f;
  f << FormatInt(position);
  for (float v : {p.Length, p.ShaftDiameter, p.InternalDiameter, p.BaseDiameter, p.RakeX, p.RakeY, p.X, p.Y, p.Z}) {
    f << FormatTrimmed(v, 2);
  }
  // Stiffnesses go out in MN and MNm^2.
  for (float v : {p.EA, p.EIx, p.EIy, p.GJ}) f << FormatTrimmed(v / 1000.0f, 2);
  if (p.ReinforcedLength > 0.0f) {
    f << FormatFixed(p.ReinforcedLength, 2);
    for (float v : {p.UnreinforcedEA, p.UnreinforcedEIx, p.UnreinforcedEIy, p.UnreinforcedGJ}) {
      f << FormatFixed(v / 1000.0f, 2);
    }
  } else {
    f << "0 0 0 0 0";
  }
  return f.str();
}

std::string LayerValues(const Layer& l) {
  Fields f;
  f << FormatTrimmed(l.DepthToTop, 2) << FormatTrimmed(l.Ev, 1) << FormatTrimmed(l.dEv, 1) << FormatTrimmed(l.Eh, 1)
    << FormatTrimmed(l.dEh, 1) << FormatTrimmed(l.Poisson, 2);
  return f.str();
}

// Empty for a ground type the file has no row for.
std::string GroundValues(const Layer& l) {
  Fields f;
  f << FormatInt(l.GroundType) << FormatTrimmed(l.WeightDensity, 2) << FormatTrimmed(l.MaxSkinFriction, 1)
    << FormatTrimmed(l.MaxBearingPressure, 1);
  switch (l.GroundType) {
    case kCoarseSoil:
      f << FormatTrimmed(l.phi, 1) << FormatTrimmed(l.delta, 1) << FormatTrimmed(l.Ks, 2) << "0 0 0";
      break;
    case kFineSoil:
      f << FormatTrimmed(l.cu, 1) << FormatTrimmed(l.dcu, 1) << FormatTrimmed(l.alpha, 2) << "0 0 0";
      break;
    case kRock:
      f << FormatTrimmed(l.qu, 1);
      for (float k : {l.k1, l.k2, l.k3, l.k4, l.k5}) f << FormatTrimmed(k, 2);
      break;
    case kDirectValues:
      f << FormatTrimmed(l.DirectSkinFriction, 1) << FormatTrimmed(l.DirectEndBearing, 1)
        << FormatTrimmed(l.DirectLateral, 1) << "0 0 0";
      break;
    default:
      return {};
  }
  return f.str();
}

}  // namespace

int WriteTMKUnit(Engine& e, int unit) {
  if (unit < 1) return 0;
  TextFile* out = WritableUnit(e, unit);
  if (out == nullptr) return 0;
  LogLine(e, "Writing data to TMK output file unit: " + FormatInt(unit));
  SendInfo(e, "Writing data to TMK file...");

  const Project& pr = e.project;
  const Foundation& fd = e.foundation;
  const Borehole& bh = e.borehole;
  const Actions& ac = e.actions;
  // Comment lines, and the name lines that go with them, are left out on request; the
  // request is looked at line by line.
  auto comment = [&](std::string_view text) {
    if (!e.project.ExcludeTMKComments) out->line(text);
  };
  auto value = [&](std::string_view text) { out->line(text); };

  comment("[Version]");
  value(VersionText());
  comment("[Name]");
  value(TrimRight(pr.Name.padded()));
  comment("[Notes]");
  value(TrimRight(pr.Description.padded()));
  comment("[Date]");
  value(DateText(pr));
  comment("[Filename]");
  value(TrimRight(pr.Filename.padded()));
  comment("[Flags]");
  value(FlagDigits(pr));
  comment("[No. piles/no. elements/no. increments]");
  value((Fields() << FormatInt(fd.NumberOfPiles) << FormatInt(fd.NumberOfElements) << FormatInt(ac.NumberOfIncrements)
                  << FormatInt(fd.CapStiffness)).str());

  comment("[Pile Name]");
  // The degree signs are single Latin-1 bytes.
  comment(
      "[Number/Length(m)/Ds(m)/Do(m)/Db(m)/Xrake(\xB0)/Yrake(\xB0)/X(m)/Y(m)/Z(m)/EA(MN)/EIx(MNm^2)/EIy(MNm^2)/"
      "GJ(MNm^2)/ReinforcedLength(m)/EA+(MN)/EIx+(MNm^2)/EIy+(MNm^2)/GJ+(MNm^2)]");
  const int piles = std::min<int>(fd.NumberOfPiles, static_cast<int>(fd.PileTable.size()));
  for (int p = 1; p <= piles; ++p) {
    comment(fd.Piles(p).Name.trimmed());
    value(PileValues(p, fd.Piles(p)));
  }

  comment("[Pile interaction flag: 1 = infinite; 2 = auto; 3 = custom]");
  value(FormatInt(pr.InteractionFlag));
  if (pr.InteractionFlag == 3) {
    comment("[Pile interaction distance]");
    value(FormatFixed(pr.InteractionDistance, 1));
  }
  comment("[Depth to rigid layer (m)]");
  value(FormatTrimmed(bh.DepthToRigidLayer, 1));
  if (pr.NonLinear) {
    comment("[Overburden (kPa)/Elastic unloading flag: 0 = off; 1 = on]");
    value(FormatFixed(bh.Overburden, 1) + (pr.ElasticUnloading ? " 1" : " 0"));
  }

  comment("[No. layers/Layer averaging flag: 1 = Poulos; 2 = Yamashita]");
  value((Fields() << FormatInt(bh.NumberOfLayers) << FormatInt(bh.LayerAveraging)).str());
  comment("[Layer Name]");
  comment("[Depth(m)/Ev(kPa)/dEv(kN/m^3)/Eh(kPa)/dEh(kN/m^3)/Poisson]");
  const int layers = std::min<int>(bh.NumberOfLayers, static_cast<int>(bh.LayerTable.size()));
  for (int i = 1; i <= layers; ++i) {
    comment(bh.Layers(i).Name.trimmed());
    value(LayerValues(bh.Layers(i)));
  }

  if (pr.NonLinear) {
    comment("[Soil Name]");
    comment("[Type(1 = coarse soil)/weight(kN/m^3)/max_qs(kPa)/max_qb(kPa)/phi(deg)/delta(deg)/Ks/-/-/-]");
    comment("[Type(2 = fine soil)/weight(kN/m^3)/max_qs(kPa)/max_qb(kPa)/cu(kPa)/dcu(kN/m^3)/alpha/-/-/-]");
    comment("[Type(3 = rock)/weight(kN/m^3)/max_qs(kPa)/max_qb(kPa)/UCS(MPa)/k1/k2/k3/k4/k5]");
    comment("[Type(4 = direct)/weight(kN/m^3)/max_qs(kPa)/max_qb(kPa)/qs(kPa)/qb(kPa)/qlat(kPa)/-/-/-]");
    for (int i = 1; i <= layers; ++i) {
      comment(bh.Layers(i).GroundName.trimmed());
      const std::string row = GroundValues(bh.Layers(i));
      if (!row.empty()) value(row);
    }
    comment("[Nq flag: 2 = custom; 1 = auto/Nq(-)]");
    value(pr.AutoNq == 1 ? std::string("1") : "2 " + FormatFixed(pr.Nq, 1));
    comment("[Stress limits: skin friction (kPa)/end bearing (kPa)]");
    value(FormatFixed(pr.LimitingShaftFriction, 0) + " " + FormatFixed(pr.LimitingBearingPressure, 0));
    comment("[Hyperbolic factors: shaft/base/lateral/torsion]");
    value((Fields() << FormatFixed(pr.Rs, 2) << FormatFixed(pr.Rb, 2) << FormatFixed(pr.Rl, 2)
                    << FormatFixed(pr.Rt, 2)).str());
  }

  comment("[Free-standing length (m)]");
  value(FormatTrimmed(fd.FreeStandingLength, 2));
  comment("[Fx(kN)/Fy(kN)/Fz(kN)/Mx(kNm)/My(kNm)/Mz(kNm)/X(m)/Y(m)]");
  value((Fields() << FormatTrimmed(ac.Fx, 2) << FormatTrimmed(ac.Fy, 2) << FormatTrimmed(ac.Fz, 2)
                  << FormatTrimmed(ac.Mx, 2) << FormatTrimmed(ac.My, 2) << FormatTrimmed(ac.Mz, 2)
                  << FormatTrimmed(ac.X, 3) << FormatTrimmed(ac.Y, 3)).str());
  // A file without its comments ends in a line "0".
  if (e.project.ExcludeTMKComments) value("0");

  // The file stays open for the host to close; what is written is on disk already.
  e.files.tmk.flush();
  SendInfo(e, "Finished writing data to TMK output file");
  return 1;
}

int CreateTMKFile(Engine& e, const std::string& path) {
  CloseTMKFile(e);
  if (!e.files.tmk.create(path)) {
    LogLine(e, "Error opening TMK file: " + path);
    e.project.TMKUnit = 0;
    return 0;
  }
  LogLine(e, "Writing data to TMK file: " + path);
  e.project.TMKUnit = kTMKUnit;
  return WriteTMKUnit(e, kTMKUnit);
}

}  // namespace quellon
