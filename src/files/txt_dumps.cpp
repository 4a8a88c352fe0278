// The debugging dumps of the TXT report: the matrices and vectors of the assembly and
// of each increment, each under its title and its flag. The driver and the solution
// call these at fixed points of a run, unconditionally; each checks the TXT unit and
// its own flags here.
#include <string>

#include "engine/engine.h"
#include "engine/notify.h"
#include "engine/workspace.h"
#include "files/number_forms.h"
#include "files/print_matrix.h"
#include "files/print_pile_table.h"
#include "files/reports.h"
#include "files/txt_common.h"

namespace quellon {

namespace {

// The tables of the unit cap movements are K wide, but only six columns hold values.
constexpr int kUnitColumns = 6;

}  // namespace

void PrintLimitingStresses(Engine& e) {
  if (!TXTOpen(e) || !e.project.NonLinear || !e.project.Flag(18)) return;
  ReportOut out = TXTOut(e);
  const Workspace& w = e.ws;
  out.line("");
  out.line("Limiting pile shaft shear stresses (& base pressure) (kPa):");
  PrintPileTable(e, out, w.LimitAxial, true);
  out.line("");
  out.line("Limiting pile shaft normal stresses in X-direction (kPa):");
  PrintPileTable(e, out, w.LimitX, false);
  out.line("");
  out.line("Limiting pile shaft normal stresses in Y-direction (kPa):");
  PrintPileTable(e, out, w.LimitY, false);
  out.line("");
  out.line("Limiting pile torsional stresses (kPa):");
  PrintPileTable(e, out, w.LimitTorsion, false);
}

void WriteSinglePileMatrix(Engine& e, int pile) {
  if (!TXTOpen(e) || !e.project.Flag(3)) return;
  ReportOut out = TXTOut(e);
  const GroupLayout c = LayoutOf(e);
  out.line("");
  out.line("Soil stiffness matrix soil_K for pile number   " + FormatInt(PileNumber(e, pile), 3));
  // The pile's diagonal block of G, copied out so that it prints as a matrix of its own.
  RealMatrix block;
  if (!Create2DRealMatrix(e, block, c.M, c.M)) {
    const char* text = "Failed to create matrix in subroutine WriteSinglePileMatrix";
    SendError(e, text);
    LogLine(e, text);
    return;
  }
  const int offset = c.PileStart(pile);
  if (pile >= 1 && offset + c.M <= e.ws.G.rows() && offset + c.M <= e.ws.G.cols()) {
    for (int j = 1; j <= c.M; ++j)
      for (int i = 1; i <= c.M; ++i) block(i, j) = e.ws.G(offset + i, offset + j);
  }
  PrintMatrix(e, out, block, c.M, c.M);
  Release2DRealMatrix(block);
}

void PrintPileMatrix(Engine& e, int pile) {
  if (!TXTOpen(e) || !e.project.Flag(4)) return;
  ReportOut out = TXTOut(e);
  const GroupLayout c = LayoutOf(e);
  out.line("Pile matrix for pile number   " + FormatInt(PileNumber(e, pile), 3));
  PrintMatrix(e, out, e.ws.pile_D, c.M, c.M);
}

void PrintIncrementHead(Engine& e, int increment) {
  if (!TXTOpen(e)) return;
  ReportOut out = TXTOut(e);
  const GroupLayout c = LayoutOf(e);
  if (e.project.Flag(19)) {
    out.line("");
    out.line(Repeat('*', 77));
    out.line(Repeat(' ', 26) + "OUTPUT AT INCREMENT " + FormatInt(increment, 4));
    out.line(Repeat('*', 77));
  }
  if (e.project.Flag(8) && increment == 1) {
    out.line("G -Initial (elastic) soil flexibility matrix of the group");
    PrintMatrix(e, out, e.ws.G, c.N, c.N);
  }
  if (e.project.Flag(14)) {
    out.line("D -Pile flexibility matrix of the group");
    // The workspace keeps only the piles' diagonal blocks; between piles D is zero.
    const RealMatrix& D = e.ws.D;
    if (D.rows() == c.M && D.cols() == c.N) {
      PrintMatrix(e, out, c.N, c.N, [&D](int i, int j) { return PileFlexibility(D, i, j); });
    } else {
      PrintMatrix(e, out, RealMatrix{}, c.N, c.N);
    }
  }
}

void PrintSolveVectors(Engine& e) {
  if (!TXTOpen(e)) return;
  ReportOut out = TXTOut(e);
  const GroupLayout c = LayoutOf(e);
  if (e.project.Flag(9)) {
    out.line("UBCV -boundary condition vectors of the group");
    PrintMatrix(e, out, e.ws.UBCV, c.N, kUnitColumns);
  }
  if (e.project.Flag(10)) {
    out.line("Traction vectors due to unit displmnt bound. conditions");
    PrintMatrix(e, out, e.ws.Tractions, c.N, kUnitColumns);
  }
}

void PrintUnitStresses(Engine& e) {
  if (!TXTOpen(e) || !e.project.Flag(12)) return;
  ReportOut out = TXTOut(e);
  const GroupLayout c = LayoutOf(e);
  const Workspace& w = e.ws;
  out.line("");
  out.line("Axial stresses due to unit displmnt bound. conditions");
  PrintMatrix(e, out, w.UnitStressAxial, (c.n + 1) * c.P, kUnitColumns);
  out.line("");
  out.line("Trasv. stresses in X-dir due to unit displmnt bound. conditions");
  PrintMatrix(e, out, w.UnitStressX, c.n * c.P, kUnitColumns);
  out.line("");
  out.line("Trasv. stresses in Y-dir due to unit displmnt bound. conditions");
  PrintMatrix(e, out, w.UnitStressY, c.n * c.P, kUnitColumns);
  out.line("");
  out.line("Torsional stresses due to unit displmnt bound. conditions");
  PrintMatrix(e, out, w.UnitStressTorsion, c.n * c.P, kUnitColumns);
}

void PrintUnitHeadLoads(Engine& e) {
  if (!TXTOpen(e) || !e.project.Flag(20)) return;
  ReportOut out = TXTOut(e);
  const GroupLayout c = LayoutOf(e);
  const Workspace& w = e.ws;
  out.line("");
  out.line(" Pile-head axial loads due to unit displ. boundary conditions");
  PrintMatrix(e, out, w.HeadAxial, c.P, kUnitColumns);
  out.line(" Pile-head transverse loads in X-dir due to unit displ. boundary conditions");
  PrintMatrix(e, out, w.HeadX, c.P, kUnitColumns);
  out.line(" Pile-head moments in XZ plane due to unit displ. boundary conditions");
  PrintMatrix(e, out, w.HeadMomentXZ, c.P, kUnitColumns);
  out.line(" Pile-head transverse loads in Y-dir due to unit displ. boundary conditions");
  PrintMatrix(e, out, w.HeadY, c.P, kUnitColumns);
  out.line(" Pile-head moments in YZ plane due to unit displ. boundary conditions");
  PrintMatrix(e, out, w.HeadMomentYZ, c.P, kUnitColumns);
  out.line(" Pile-head torsional moments in XY plane due to unit displ. boundary conditions");
  PrintMatrix(e, out, w.HeadTorque, c.P, kUnitColumns);
}

void PrintIncrementalDisplacements(Engine& e) {
  if (!TXTOpen(e) || !e.project.Flag(17)) return;
  ReportOut out = TXTOut(e);
  const GroupLayout c = LayoutOf(e);
  const Workspace& w = e.ws;
  out.line("");
  out.line("Increm. axial pile displacements (at element centre)");
  PrintVector(e, out, w.DispAxialInc, (c.n + 1) * c.P);
  out.line("Increm. transverse pile displacements in X-dir (at element centre)");
  PrintVector(e, out, w.DispXInc, c.n * c.P);
  out.line("Increm. transverse pile displacements in Y-dir (at element centre)");
  PrintVector(e, out, w.DispYInc, c.n * c.P);
  out.line("Increm. torsional pile rotations in XY plane (at element centre)");
  PrintVector(e, out, w.TwistInc, c.n * c.P);
}

bool ReportShowsSystemMatrix(const Engine& e) { return TXTOpen(e) && e.project.NonLinear && e.project.Flag(6); }

void PrintNonLinearMatrices(Engine& e, int increment) {
  if (!TXTOpen(e) || !e.project.NonLinear) return;
  ReportOut out = TXTOut(e);
  const GroupLayout c = LayoutOf(e);
  if (e.project.Flag(5)) {
    out.line("G -Non-linear soil flexib. matrix of the group at increm.no." + FormatInt(increment, 4));
    const Workspace& w = e.ws;
    if (w.G.rows() == c.N && w.G.cols() == c.N) {
      PrintMatrix(e, out, c.N, c.N, [&w](int i, int j) { return SoftenedSoilFlexibility(w, i, j); });
    } else {
      PrintMatrix(e, out, RealMatrix{}, c.N, c.N);
    }
  }
  if (e.project.Flag(6)) {
    out.line("G+D -Non-linear soil+pile flexib. matrix of the group after zeroing at increm. no." +
             FormatInt(increment, 4));
    PrintMatrix(e, out, e.ws.system.GD, c.N, c.N);
  }
}

}  // namespace quellon
