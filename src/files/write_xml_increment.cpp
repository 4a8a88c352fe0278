// The results of an increment in the XML output: the pile group stiffness of a linear
// run, the pile cap, every element of every pile, and at the last
// increment of a non-linear run the summary of the increments before it.
#include <algorithm>
#include <cmath>
#include <string>

#include "engine/engine.h"
#include "engine/group_layout.h"
#include "files/reports.h"
#include "files/xml_document.h"
#include "files/xml_writing.h"

namespace quellon {

namespace {

constexpr const char* kAxes[3] = {"X", "Y", "Z"};

using CoefficientWriter = void (*)(TextFile&, int, std::string_view, std::string_view, float);

// One family of a 6 by 6 table: action axis outer, effect axis inner, each X, Y, Z.
void WriteFamily(TextFile& out, CoefficientWriter write, const float t[6][6], int row0, int col0) {
  for (int a = 0; a < 3; ++a) {
    for (int b = 0; b < 3; ++b) write(out, 20, kAxes[a], kAxes[b], t[row0 + a][col0 + b]);
  }
}

// Out-of-range rows read as 0, so that a workspace of another shape can't be read past
// its end.
float At(const RealVector& v, int i) { return i >= 1 && i <= v.size() ? v(i) : 0.0f; }
float At(const RealMatrix& m, int i, int j) {
  return i >= 1 && i <= m.rows() && j >= 1 && j <= m.cols() ? m(i, j) : 0.0f;
}
bool YieldedAt(const LogicalMatrix& y, int row, int i) {
  return row >= 1 && row <= y.rows() && i >= 1 && i <= y.cols() && y(row, i) != 0;
}

float CutLoad(float v) { return std::fabs(v) < 0.001f ? 0.0f : v; }
float CutMovement(float v) { return std::fabs(v) < 1e-6f ? 0.0f : v; }

// Cap vectors are held in the internal order; the document gives forces and
// displacements X, Y, Z, then moments and rotations about X, Y, Z: the external order.
constexpr const int* kLinear = kInternalAxis;
constexpr const int* kAngular = kInternalAxis + 3;

void WriteCapActions(TextFile& out, const float load[7]) {
  for (int a = 0; a < 3; ++a) WriteXMLAxisValue(out, 20, "Force", kAxes[a], CutLoad(load[kLinear[a]]), "kN");
  for (int a = 0; a < 3; ++a) WriteXMLAxisValue(out, 20, "Moment", kAxes[a], CutLoad(load[kAngular[a]]), "kNm");
}

void WriteCapEffects(TextFile& out, const float move[7], float tol) {
  for (int a = 0; a < 3; ++a) {
    WriteXMLAxisValue(out, 20, "Displacement", kAxes[a], CutMovement(move[kLinear[a]]) * 1000.0f, "mm", tol);
  }
  for (int a = 0; a < 3; ++a) {
    WriteXMLAxisValue(out, 20, "Rotation", kAxes[a], CutMovement(move[kAngular[a]]) * 1000.0f, "mrad", tol);
  }
}

void WritePileCap(const Engine& e, TextFile& out) {
  const Workspace& ws = e.ws;
  float load[7] = {};
  float move[7] = {};
  for (int j = 1; j <= 6; ++j) {
    load[j] = At(ws.CapLoadTotal, j);
    move[j] = At(ws.CapDispTotal, j);
  }
  WriteXMLLine(out, 12, "<Pile-Cap>");
  WriteXMLLine(out, 16, "<Centre-Of-Rotation>");
  WriteXMLAxisValue(out, 20, "Position", "X", e.foundation.CentreOfRotationX, "m");
  WriteXMLAxisValue(out, 20, "Position", "Y", e.foundation.CentreOfRotationY, "m");
  WriteXMLLine(out, 16, "</Centre-Of-Rotation>");
  WriteXMLLine(out, 16, "<Actions>");
  WriteCapActions(out, load);
  WriteXMLLine(out, 16, "</Actions>");
  WriteXMLLine(out, 16, "<Effects>");
  WriteCapEffects(out, move, 1e-4f);
  WriteXMLLine(out, 16, "</Effects>");
  WriteXMLLine(out, 12, "</Pile-Cap>");
}

// The free-standing part of pile p, above the ground: no soil stress, the movement and
// loads of the pile head.
void WriteHeadElement(TextFile& out, const Engine& e, int p, int in) {
  const Workspace& ws = e.ws;
  const float f = e.foundation.FreeStandingLength;
  WriteXMLLine(out, in, "<Element number=\"0\">");
  WriteXMLValue(out, in + 4, "Depth", -f, "m", 0.001f);
  WriteXMLValue(out, in + 4, "Length", f, "m", 0.001f);
  WriteXMLAxisValue(out, in + 4, "Normal-Stress", "X", 0.0f, "kPa", 0.01f);
  WriteXMLAxisValue(out, in + 4, "Normal-Stress", "Y", 0.0f, "kPa", 0.01f);
  WriteXMLAxisValue(out, in + 4, "Torsional-Stress", "Z", 0.0f, "kPa", 0.01f);
  WriteXMLValue(out, in + 4, "Shear-Stress", 0.0f, "kPa", 0.01f);
  WriteXMLAxisValue(out, in + 4, "Displacement", "X", At(ws.HeadDispX, p), "m", 1e-4f);
  WriteXMLAxisValue(out, in + 4, "Displacement", "Y", At(ws.HeadDispY, p), "m", 1e-4f);
  WriteXMLAxisValue(out, in + 4, "Displacement", "Z", At(ws.HeadDispAxial, p), "m", 1e-4f);
  WriteXMLAxisValue(out, in + 4, "Rotation", "Z", At(ws.HeadTwist, p), "rad", 1e-4f);
  WriteXMLAxisValue(out, in + 4, "Force", "X", At(ws.PileHeadX, p), "kN", 0.01f);
  WriteXMLAxisValue(out, in + 4, "Force", "Y", At(ws.PileHeadY, p), "kN", 0.01f);
  WriteXMLAxisValue(out, in + 4, "Force", "Z", At(ws.PileHeadAxial, p), "kN", 0.01f);
  WriteXMLAxisValue(out, in + 4, "Moment", "X", At(ws.PileHeadMomentYZ, p), "kNm", 0.01f);
  WriteXMLAxisValue(out, in + 4, "Moment", "Y", At(ws.PileHeadMomentXZ, p), "kNm", 0.01f);
  WriteXMLAxisValue(out, in + 4, "Moment", "Z", At(ws.PileHeadTorque, p), "kNm", 0.01f);
  WriteXMLLine(out, in, "</Element>");
}

// Shaft element k of pile p. Rows: q for the transverse and torsional tables, r for the
// axial ones (whose row n + 1 of a pile is the toe).
void WriteShaftElement(TextFile& out, const Engine& e, const Pile& pile, int p, int k, int in) {
  const Workspace& ws = e.ws;
  const GroupLayout g = LayoutOf(e);
  const int n = g.n;
  const int q = g.ElementRow(p, k);
  const int r = g.AxialRow(p, k);
  const int c = in + 4;
  WriteXMLLine(out, in, "<Element number=\"" + XMLInteger(k) + "\">");
  WriteXMLValue(out, c, "Depth", static_cast<float>(k - 1) * pile.Length / static_cast<float>(n), "m", 0.001f);
  WriteXMLValue(out, c, "Length", pile.Length / static_cast<float>(n), "m", 0.001f);
  if (e.project.NonLinear) {
    WriteXMLAxisValueLimit(out, c, "Normal-Stress", "X", At(ws.StressX, q), At(ws.LimitX, q), "kPa",
                           YieldedAt(ws.Yielded, 2, q), 0.01f);
    WriteXMLAxisValueLimit(out, c, "Normal-Stress", "Y", At(ws.StressY, q), At(ws.LimitY, q), "kPa",
                           YieldedAt(ws.Yielded, 3, q), 0.01f);
    WriteXMLAxisValueLimit(out, c, "Torsional-Stress", "Z", At(ws.StressTorsion, q), At(ws.LimitTorsion, q), "kPa",
                           YieldedAt(ws.Yielded, 4, q), 0.01f);
    WriteXMLValueLimit(out, c, "Shear-Stress", At(ws.StressAxial, r), At(ws.LimitAxial, r), "kPa",
                       YieldedAt(ws.Yielded, 1, r), 0.01f);
  } else {
    WriteXMLAxisValue(out, c, "Normal-Stress", "X", At(ws.StressX, q), "kPa", 0.01f);
    WriteXMLAxisValue(out, c, "Normal-Stress", "Y", At(ws.StressY, q), "kPa", 0.01f);
    WriteXMLAxisValue(out, c, "Torsional-Stress", "Z", At(ws.StressTorsion, q), "kPa", 0.01f);
    WriteXMLValue(out, c, "Shear-Stress", At(ws.StressAxial, r), "kPa", 0.01f);
  }
  WriteXMLAxisValue(out, c, "Displacement", "X", At(ws.DispX, q), "m", 1e-4f);
  WriteXMLAxisValue(out, c, "Displacement", "Y", At(ws.DispY, q), "m", 1e-4f);
  WriteXMLAxisValue(out, c, "Displacement", "Z", At(ws.DispAxial, r), "m", 1e-4f);
  WriteXMLAxisValue(out, c, "Rotation", "Z", At(ws.Twist, q), "rad", 1e-4f);
  WriteXMLAxisValue(out, c, "Force", "X", At(ws.ShearX, q), "kN", 0.01f);
  WriteXMLAxisValue(out, c, "Force", "Y", At(ws.ShearY, q), "kN", 0.01f);
  WriteXMLAxisValue(out, c, "Force", "Z", At(ws.LoadAxial, r), "kN", 0.01f);
  WriteXMLAxisValue(out, c, "Moment", "X", At(ws.MomentYZ, q), "kNm", 0.01f);
  WriteXMLAxisValue(out, c, "Moment", "Y", At(ws.MomentXZ, q), "kNm", 0.01f);
  WriteXMLAxisValue(out, c, "Moment", "Z", At(ws.Torque, q), "kNm", 0.01f);
  WriteXMLLine(out, in, "</Element>");
}

void WriteToe(TextFile& out, const Engine& e, const Pile& pile, int p, int in) {
  const Workspace& ws = e.ws;
  const GroupLayout g = LayoutOf(e);
  const int r = g.AxialRow(p, g.n + 1);
  const int c = in + 4;
  WriteXMLLine(out, in, "<Toe>");
  WriteXMLValue(out, c, "Depth", pile.Length, "m");
  if (e.project.NonLinear) {
    WriteXMLValueLimit(out, c, "Bearing-Pressure", At(ws.StressAxial, r), At(ws.LimitAxial, r), "kPa",
                       YieldedAt(ws.Yielded, 1, r));
  } else {
    WriteXMLValue(out, c, "Bearing-Pressure", At(ws.StressAxial, r), "kPa");
  }
  WriteXMLAxisValue(out, c, "Displacement", "Z", At(ws.DispAxial, r), "m");
  WriteXMLAxisValue(out, c, "Force", "Z", At(ws.LoadAxial, r), "kN");
  WriteXMLLine(out, in, "</Toe>");
}

// `base` is the indentation of <Piles>: 12 below the pile cap block, 0 without it.
void WritePiles(const Engine& e, TextFile& out, int base) {
  const Foundation& fd = e.foundation;
  const int piles = std::min<int>(fd.NumberOfPiles, static_cast<int>(fd.PileTable.size()));
  WriteXMLLine(out, base, "<Piles>");
  WriteXMLLine(out, base + 4, "<No-Of-Piles number=\"" + XMLInteger(fd.NumberOfPiles) + "\"/>");
  for (int p = 1; p <= piles; ++p) {
    const Pile& pile = fd.Piles(p);
    WriteXMLLine(out, base + 4, "<Pile number=\"" + XMLInteger(p) + "\">");
    WriteXMLLine(out, base + 8, "<Name>" + XMLText(pile.Name.trimmed()) + "</Name>");
    WriteXMLLine(out, base + 8, "<No-Of-Elements number=\"" + XMLInteger(fd.NumberOfElements) + "\"/>");
    WriteHeadElement(out, e, p, base + 8);
    for (int k = 1; k <= fd.NumberOfElements; ++k) WriteShaftElement(out, e, pile, p, k, base + 8);
    WriteToe(out, e, pile, p, base + 8);
    WriteXMLLine(out, base + 4, "</Pile>");
  }
  WriteXMLLine(out, base, "</Piles>");
}

// The cap loads and movements after each increment before the last.
void WriteIncrementSummary(const Engine& e, TextFile& out, int last) {
  const Workspace& ws = e.ws;
  for (int i = 1; i <= last - 1; ++i) {
    float load[7] = {};
    float move[7] = {};
    for (int j = 1; j <= 6; ++j) {
      load[j] = At(ws.HistoryLoad, i, j);
      move[j] = At(ws.HistoryDisp, i, j);
    }
    WriteXMLLine(out, 8, "<Increment number=\"" + XMLInteger(i) + "\">");
    WriteXMLLine(out, 12, "<Pile-Cap>");
    WriteXMLLine(out, 16, "<Actions>");
    WriteCapActions(out, load);
    WriteXMLLine(out, 16, "</Actions>");
    WriteXMLLine(out, 16, "<Effects>");
    WriteCapEffects(out, move, 0.0f);
    WriteXMLLine(out, 16, "</Effects>");
    WriteXMLLine(out, 12, "</Pile-Cap>");
    WriteXMLLine(out, 8, "</Increment>");
  }
}

void WriteStiffnesses(TextFile& out, const float t[6][6]) {
  WriteXMLLine(out, 16, "<Stiffnesses>");
  WriteFamily(out, WriteXMLForceDisplacementStiffness, t, 0, 0);
  WriteFamily(out, WriteXMLForceRotationStiffness, t, 0, 3);
  WriteFamily(out, WriteXMLMomentDisplacementStiffness, t, 3, 0);
  WriteFamily(out, WriteXMLMomentRotationStiffness, t, 3, 3);
  WriteXMLLine(out, 16, "</Stiffnesses>");
}

void WriteFlexibilities(TextFile& out, const float t[6][6]) {
  WriteXMLLine(out, 16, "<Flexibilities>");
  WriteFamily(out, WriteXMLDisplacementForceFlexibility, t, 0, 0);
  WriteFamily(out, WriteXMLRotationForceFlexibility, t, 3, 0);
  WriteFamily(out, WriteXMLDisplacementMomentFlexibility, t, 0, 3);
  WriteFamily(out, WriteXMLRotationMomentFlexibility, t, 3, 3);
  WriteXMLLine(out, 16, "</Flexibilities>");
}

}  // namespace

void WriteXMLIncrementBlocks(const Engine& e, TextFile& out, const float kt[6][6], const float ft[6][6]) {
  const Project& pr = e.project;
  if (!pr.NonLinear && (pr.Flag(21) || pr.Flag(22))) {
    WriteXMLLine(out, 12, "<Pile-Group>");
    if (pr.Flag(21)) WriteStiffnesses(out, kt);
    if (pr.Flag(22)) WriteFlexibilities(out, ft);
    WriteXMLLine(out, 12, "</Pile-Group>");
  }
  WritePileCap(e, out);
  if (pr.Flag(27) && pr.Flag(28) && pr.Flag(31)) WritePiles(e, out, 12);
}

void WriteXMLGroupStiffness(Engine& e, const float t[6][6]) {
  TextFile* out = XMLOutput(e);
  if (out == nullptr || e.project.NonLinear) return;
  const bool stiffness = e.project.Flag(21);
  // The group element opens for either table, so that the flexibilities alone still
  // stand inside it.
  if (!stiffness && !e.project.Flag(22)) return;
  XMLDocumentState& doc = XMLDocument(e);
  if (!doc.pile_group_open) {
    WriteXMLLine(*out, 12, "<Pile-Group>");
    doc.pile_group_open = true;
  }
  if (!stiffness) return;
  WriteStiffnesses(*out, t);
}

void WriteXMLGroupFlexibility(Engine& e, const float t[6][6]) {
  TextFile* out = XMLOutput(e);
  if (out == nullptr || e.project.NonLinear) return;
  XMLDocumentState& doc = XMLDocument(e);
  if (e.project.Flag(22)) {
    if (!doc.pile_group_open) {
      WriteXMLLine(*out, 12, "<Pile-Group>");
      doc.pile_group_open = true;
    }
    WriteFlexibilities(*out, t);
  }
  // Closed here also when only the stiffnesses were asked for.
  if (doc.pile_group_open) {
    WriteXMLLine(*out, 12, "</Pile-Group>");
    doc.pile_group_open = false;
  }
}

bool WriteXMLPileCap(Engine& e) {
  TextFile* out = XMLOutput(e);
  if (out == nullptr || !e.project.Flag(25)) return false;
  WritePileCap(e, *out);
  return true;
}

void WriteXMLPiles(Engine& e, int increment) {
  TextFile* out = XMLOutput(e);
  if (out == nullptr) return;
  const Project& pr = e.project;
  XMLDocumentState& doc = XMLDocument(e);
  const bool last = increment == e.actions.NumberOfIncrements;

  if (pr.Flag(27) && pr.Flag(28) && pr.Flag(31)) {
    WritePiles(e, *out, pr.Flag(25) ? 12 : 0);
    // The run's element closes behind the piles of its last increment. An earlier
    // increment that asks for the piles leaves it open, so that the blocks of every
    // increment stand in it, in order.
    if (last && doc.increment_open) {
      WriteXMLLine(*out, 8, "</Increment>");
      doc.increment_open = false;
    }
  }
  if (pr.Flag(36) && last && pr.NonLinear) {
    // The summary stands beside the run's element, so that element closes first if the
    // piles block didn't close it.
    if (doc.increment_open) {
      WriteXMLLine(*out, 8, "</Increment>");
      doc.increment_open = false;
    }
    WriteIncrementSummary(e, *out, increment);
  }
}

void WriteXMLCapacityStop(Engine& e) {
  TextFile* out = XMLOutput(e);
  if (out == nullptr) return;
  // The run ends in this increment: its element closes now, unless the blocks of the
  // increment closed it already.
  XMLDocumentState& doc = XMLDocument(e);
  if (doc.increment_open) {
    WriteXMLLine(*out, 4, "</Increment>");
    doc.increment_open = false;
  }
}

}  // namespace quellon
