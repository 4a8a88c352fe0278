// The results of an increment in the TXT report: the group coefficient tables of a
// linear run, the cap and pile result tables in the order the report gives them, the
// history tables at the last increment, and the lines that end a run at the axial
// capacity. Totals print with the cut-offs of small values unless flag 38 is set.
#include <string>

#include "engine/engine.h"
#include "engine/notify.h"
#include "engine/workspace.h"
#include "files/number_forms.h"
#include "files/print_pile_table.h"
#include "files/reports.h"
#include "files/txt_common.h"

namespace quellon {

namespace {

float HistoryValue(const RealMatrix& h, int i, int j) {
  return i >= 1 && i <= h.rows() && j >= 1 && j <= h.cols() ? h(i, j) : 0.0f;
}

// The coefficient tables: six rows, each a title and one row of t.
void WriteCoefficientRows(ReportOut& out, const char* const titles[6], const float t[6][6], int decimals) {
  for (int a = 0; a < 6; ++a) {
    std::string text = titles[a];
    for (int b = 0; b < 6; ++b) text += FormatFix(t[a][b], 11, decimals);
    out.line(text);
  }
}

// Work vectors that hold the printed form of a total: the values, or 0 where the
// magnitude is not above the cut-off. With flag 38 the totals print as they stand.
class CutCopies {
 public:
  explicit CutCopies(const Engine& e) : keep_small_(e.project.Flag(38)) {}
  bool create(Engine& e, int size) {
    return Create1DRealMatrix(e, head_, size) != 0 && Create1DRealMatrix(e, rows_, size) != 0;
  }
  const RealVector& head(const RealVector& v, float cutoff) { return Copy(v, head_, cutoff); }
  const RealVector& rows(const RealVector& v, float cutoff) { return Copy(v, rows_, cutoff); }
  float value(float v, float cutoff) const { return keep_small_ ? v : Cut(v, cutoff); }

 private:
  const RealVector& Copy(const RealVector& v, RealVector& work, float cutoff) {
    if (keep_small_) return v;
    work.fill(0.0f);
    const int n = v.size() < work.size() ? v.size() : work.size();
    for (int i = 1; i <= n; ++i) work(i) = Cut(v(i), cutoff);
    return work;
  }

  bool keep_small_;
  RealVector head_, rows_;
};

void WriteCapTables(Engine& e, ReportOut& out, CutCopies& cut) {
  const Workspace& w = e.ws;
  if (e.project.Flag(23)) {
    static constexpr const char* kTexts[6] = {
        " Vertical Load              =", " Horizontal Load (X-dir)    =", " Moment (XZ plane)          =",
        " Horizontal Load (Y-dir)    =", " Moment (YZ plane)          =", " Torque (XY plane)          ="};
    out.line(" RESULTANT APPLIED LOADS:    ");
    for (int i = 1; i <= 6; ++i)
      out.line(kTexts[i - 1] + FormatFix(cut.value(ValueOr0(w.CapLoadTotal, i), kLoadCut), 12, 1));
  }
  if (e.project.Flag(24)) {
    out.line(" INCREMENTAL CAP DISPLACEMENTS :");
    out.line("     Vert.        Horiz.       Rot.        Horiz.       Rot.      Rot.");
    out.line("                  (X-dir)      (XZ)        (Y-dir)      (YZ)      (XY)");
    std::string text;
    for (int i = 1; i <= 6; ++i) text += FormatSci(ValueOr0(w.CapDispInc, i), 13, 2);
    out.line(text);
  }
  if (e.project.Flag(25)) {
    out.line("");
    out.line("RESULTANT RAFT DISPLACEMENTS :");
    out.line("     Vert.        Horiz.       Rot.         Horiz.       Rot.         Rot.");
    out.line("                  (X-dir)      (XZ)         (Y-dir)      (YZ)         (XY)");
    std::string text;
    for (int i = 1; i <= 6; ++i) text += FormatSci(cut.value(ValueOr0(w.CapDispTotal, i), kMovementCut), 13, 2);
    out.line(text);
  }
}

void WriteTableHead(ReportOut& out) {
  out.line(Repeat('-', 65));
  out.line(Repeat(' ', 30) + "TABLE");
  out.line(Repeat('-', 65));
}

// The tables of all increments so far, written at the last increment of a non-linear
// run: the cap movement of each increment, and the loads and cap movements reached.
void WriteHistoryTables(Engine& e, ReportOut& out, CutCopies& cut, int increment) {
  const Workspace& w = e.ws;
  if (e.project.Flag(37)) {
    WriteTableHead(out);
    out.line("                  INCREMENT - INCREM. CAP DISPLMNTS");
    out.line("  Incr.   Vert.     Hor.     Rot.      Hor.     Rot.   Rot.");
    out.line("          displ.    disp.    (rad)     disp.    (rad)  (rad)");
    out.line("                    (X-dir)  (XZ)      (Y-dir)  (YZ)   (XY)");
    out.line("");
    for (int i = 1; i <= increment; ++i) {
      std::string text(" ");
      text.append(FormatInt(i, 4)).append("  ");
      for (int j = 1; j <= 6; ++j) text += FormatSci(HistoryValue(w.HistoryDispInc, i, j), 11, 2);
      out.line(text);
    }
    out.line(Repeat('-', 65));
  }
  if (!e.project.Flag(36)) return;
  static constexpr const char* kHeads[2][4] = {
      {"                 APPLIED LOADS    -     RESULTANT CAP DISPLMNTS",
       "   Incr    Vert    Horiz    Moment   Vert      Horiz     Rotat",
       "           load    load     (XZ)     displ     displ     (rad)",
       "                   (X-dir)                     (X-dir)   (XZ)"},
      {"         APPLIED LOADS   -   RESULTANT CAP DISPLMNTS",
       "   Incr  Horiz    Moment     Torque   Horiz     Rotat   Rotat",
       "         load     (YZ)       (XY)     displ     (rad)   (rad)",
       "         (Y-dir)                      (Y-dir)   (YZ)    (XY)"}};
  for (int half = 0; half < 2; ++half) {
    WriteTableHead(out);
    for (const char* text : kHeads[half]) out.line(text);
    out.line("");
    const int first = 1 + 3 * half;
    for (int i = 1; i <= increment; ++i) {
      std::string text = FormatInt(i, 4);
      for (int j = first; j < first + 3; ++j)
        text += FormatFix(cut.value(HistoryValue(w.HistoryLoad, i, j), kLoadCut), 10, 1);
      text += " ";
      for (int j = first; j < first + 3; ++j)
        text += FormatSci(cut.value(HistoryValue(w.HistoryDisp, i, j), kMovementCut), 10, 2);
      out.line(text);
    }
    out.line(Repeat('-', 65));
  }
}

void WriteStressTables(Engine& e, ReportOut& out, CutCopies& cut) {
  const Workspace& w = e.ws;
  if (e.project.Flag(26)) {
    out.line("");
    out.line("Incremental pile shaft shear stresses (and base pressure) :");
    PrintPileTable(e, out, w.StressAxialInc, true);
    out.line("");
    out.line("Incremental pile shaft normal stresses in X-dir:");
    PrintPileTable(e, out, w.StressXInc, false);
    out.line("");
    out.line("Incremental pile shaft normal stresses in Y-dir:");
    PrintPileTable(e, out, w.StressYInc, false);
    out.line("");
    out.line("Incremental pile torsional stresses:");
    PrintPileTable(e, out, w.StressTorsionInc, false);
  }
  if (e.project.Flag(27)) {
    out.line("");
    out.line(" Resultant pile shaft shear stresses (and base pressure) :");
    PrintPileTable(e, out, cut.rows(w.StressAxial, kLoadCut), true);
    out.line(" Resultant pile shaft normal stresses in X-dir:");
    PrintPileTable(e, out, cut.rows(w.StressX, kLoadCut), false);
    out.line(" Resultant pile shaft normal stresses in Y-dir:");
    PrintPileTable(e, out, cut.rows(w.StressY, kLoadCut), false);
    out.line("Resultant pile torsional stresses:");
    PrintPileTable(e, out, cut.rows(w.StressTorsion, kLoadCut), false);
    out.line("");
    out.line("Resultant pile axial displs (at element centre):");
    PrintPileTableWithHead(e, out, cut.head(w.HeadDispAxial, kMovementCut), cut.rows(w.DispAxial, kMovementCut),
                           true);
    out.line("Resultant pile transverse displs in X-dir (at element centre):");
    PrintPileTableWithHead(e, out, cut.head(w.HeadDispX, kMovementCut), cut.rows(w.DispX, kMovementCut), false);
    out.line("Resultant pile transverse displs in Y-dir (at element centre):");
    PrintPileTableWithHead(e, out, cut.head(w.HeadDispY, kMovementCut), cut.rows(w.DispY, kMovementCut), false);
    out.line("Resultant pile torsional rotations in XY plane (at element centre):");
    PrintPileTableWithHead(e, out, cut.head(w.HeadTwist, kMovementCut), cut.rows(w.Twist, kMovementCut), false);
  }
}

void WriteYieldTables(Engine& e, ReportOut& out) {
  const Workspace& w = e.ws;
  if (e.project.Flag(28)) {
    out.line("");
    out.line("Identification state of elements (0=elastic, 1=plastic):");
    out.line("due to shear stresses (and base pressure) :");
    PrintYieldTable(e, out, w.Yielded, 1, true);
    out.line("");
    out.line("due to normal stresses in X-dir:");
    PrintYieldTable(e, out, w.Yielded, 2, false);
    out.line("");
    out.line("due to normal stresses in Y-dir:");
    PrintYieldTable(e, out, w.Yielded, 3, false);
    out.line("");
    out.line("due to torsional stresses:");
    PrintYieldTable(e, out, w.Yielded, 4, false);
  }
  if (e.project.Flag(29)) {
    out.line("Total no. of yielded elements due to shear stresses=" + FormatInt(w.YieldCountAxial, 3));
    out.line("");
    out.line("Total no. of yielded elements due to normal stresses in X-dir=" + FormatInt(w.YieldCountX, 3));
    out.line("");
    out.line("Total no. of yielded elements due to normal stresses in Y-dir=" + FormatInt(w.YieldCountY, 3));
    out.line("");
    out.line("");
    out.line("Total no. of yielded elements due to torsional stresses=" + FormatInt(w.YieldCountTorsion, 3));
    out.line("");
  }
}

void WriteLoadTables(Engine& e, ReportOut& out, CutCopies& cut) {
  const Workspace& w = e.ws;
  if (e.project.Flag(30)) {
    out.line("");
    out.line("Incremental axial loads (at top of each element):");
    PrintPileTable(e, out, w.LoadAxialInc, true);
    out.line("");
    out.line("Incremental transverse loads in X-dir (at top of each element):");
    PrintPileTable(e, out, w.ShearXInc, false);
    out.line("");
    out.line("Incremental bending moments in XZ plane (at top of each element):");
    PrintPileTable(e, out, w.MomentXZInc, false);
    out.line("");
    out.line("Incremental transverse loads in Y-dir (at top of each element):");
    PrintPileTable(e, out, w.ShearYInc, false);
    out.line("");
    out.line("Incremental bending moments in YZ plane (at top of each element):");
    PrintPileTable(e, out, w.MomentYZInc, false);
    out.line("");
    out.line("Incremental torsional mom. in XY plane (at top of each element):");
    PrintPileTable(e, out, w.TorqueInc, false);
  }
  if (e.project.Flag(31)) {
    out.line("Resultant pile axial loads (at top of each element):");
    PrintPileTableWithHead(e, out, cut.head(w.PileHeadAxial, kLoadCut), cut.rows(w.LoadAxial, kLoadCut), true);
    out.line("Resultant pile transverse loads in X-dir (at top of each element):");
    PrintPileTableWithHead(e, out, cut.head(w.PileHeadX, kLoadCut), cut.rows(w.ShearX, kLoadCut), false);
    out.line("Resultant pile bending moments in XZ plane (at top of each element):");
    PrintPileTableWithHead(e, out, cut.head(w.PileHeadMomentXZ, kLoadCut), cut.rows(w.MomentXZ, kLoadCut), false);
    out.line("Resultant pile transverse loads in Y-dir (at top of each element):");
    PrintPileTableWithHead(e, out, cut.head(w.PileHeadY, kLoadCut), cut.rows(w.ShearY, kLoadCut), false);
    out.line("Resultant pile bending moments in YZ plane (at top of each element):");
    PrintPileTableWithHead(e, out, cut.head(w.PileHeadMomentYZ, kLoadCut), cut.rows(w.MomentYZ, kLoadCut), false);
    out.line("Resultant pile torsional mom. in XY plane (at top of each element):");
    PrintPileTableWithHead(e, out, cut.head(w.PileHeadTorque, kLoadCut), cut.rows(w.Torque, kLoadCut), false);
  }
}

}  // namespace

void WriteTXTGroupStiffness(Engine& e, const float t[6][6]) {
  if (!TXTOpen(e) || e.project.NonLinear || !e.project.Flag(21)) return;
  ReportOut out = TXTOut(e);
  static constexpr const char* kRows[6] = {"Force X ", "Force Y ", "Force Z ", "Moment X", "Moment Y", "Torque Z"};
  out.line("");
  out.line("");
  out.line("PILE GROUP STIFFNESS COEFFICIENTS (x10e6):");
  out.line("             Displacement                     Rotation");
  out.line("             X-axis     Y-axis     Z-axis     X-axis     Y-axis     Z-axis");
  WriteCoefficientRows(out, kRows, t, 4);
}

void WriteTXTGroupFlexibility(Engine& e, const float t[6][6]) {
  if (!TXTOpen(e) || e.project.NonLinear || !e.project.Flag(22)) return;
  ReportOut out = TXTOut(e);
  static constexpr const char* kRows[6] = {"Displ X ", "Displ Y ", "Displ Z ", "Rotat X ", "Rotat Y ", "Rotat Z "};
  out.line("");
  out.line("PILE GROUP FLEXIBILITY COEFFICIENTS (/10e6):");
  out.line("             Force                            Moment");
  out.line("             X-axis     Y-axis     Z-axis     X-axis     Y-axis     Z-axis");
  WriteCoefficientRows(out, kRows, t, 3);
}

void WriteTXTIncrementResults(Engine& e, int increment) {
  if (!TXTOpen(e)) return;
  ReportOut out = TXTOut(e);
  CutCopies cut(e);
  if (!cut.create(e, NumberOfUnknowns(e))) {
    const char* text = "Failed to create matrix in subroutine WriteTXTIncrementResults";
    SendError(e, text);
    LogLine(e, text);
    return;
  }
  const bool non_linear = e.project.NonLinear != 0;
  WriteCapTables(e, out, cut);
  if (non_linear && increment == e.actions.NumberOfIncrements) WriteHistoryTables(e, out, cut, increment);
  WriteStressTables(e, out, cut);
  if (non_linear) WriteYieldTables(e, out);
  WriteLoadTables(e, out, cut);
}

void WriteTXTCapacityStop(Engine& e, int increment) {
  if (!TXTOpen(e)) return;
  ReportOut out = TXTOut(e);
  out.line(Repeat('*', 72));
  const char* what = e.foundation.NumberOfPiles == 1 ? "pile" : "group";
  out.line(std::string("ERROR: Ultimate axial capacity of the ") + what + " reached at load increment no " +
           FormatInt(increment));
  out.line(" Please re-run TOLMARK for lower applied loads");
  out.line(Repeat('*', 72));
}

}  // namespace quellon
