// Report writers called during a run. Each checks its own unit (a closed unit means
// silence) and the flags that govern it, so callers call them unconditionally at the
// points of the run named below.
#pragma once

namespace quellon {

struct Engine;

// ---- TXT report ------------------------------------------------------------------
// After PrepareGroupGeometry: banner and input part.
void WriteTXTInput(Engine& e);
// Non-linear runs, once before assembly (flag 18): the four limiting stress tables.
void PrintLimitingStresses(Engine& e);
// During assembly, per pile: the diagonal block of G (flag 3), the pile matrix pile_D
// when it was rebuilt (flag 4).
void WriteSinglePileMatrix(Engine& e, int pile);
void PrintPileMatrix(Engine& e, int pile);
// Start of an increment: banner (19), G at increment 1 (8), D (14).
void PrintIncrementHead(Engine& e, int increment);
// After Solve: UBCV (9), the traction vectors (10).
void PrintSolveVectors(Engine& e);
// After SplitTractions: the stresses due to unit cap movements (12).
void PrintUnitStresses(Engine& e);
// After CalcHeadLoads: the pile head loads due to unit cap movements (20).
void PrintUnitHeadLoads(Engine& e);
// The group stiffness k and flexibility (internal axes, column-major 6 by 6) of a linear
// run in both documents (flags 21, 22), as the tables below.
void WriteGroupStiffness(Engine& e, const float k[36]);
void WriteGroupFlexibility(Engine& e, const float flex[36]);
// The coefficient tables. t: 6 by 6, row-major t[a][b], external axes, scaled and cut.
void WriteTXTGroupStiffness(Engine& e, const float t[6][6]);
void WriteTXTGroupFlexibility(Engine& e, const float t[6][6]);
// After SplitSoilDisplacements: the incremental displacements (17).
void PrintIncrementalDisplacements(Engine& e);
// After the softening: G (5) and GD (6) of a non-linear run. GD is shown as a matrix,
// which the caller must have formed (FormUnchangedSystem) when the report shows it.
void PrintNonLinearMatrices(Engine& e, int increment);
bool ReportShowsSystemMatrix(const Engine& e);
// The result tables of the increment.
void WriteTXTIncrementResults(Engine& e, int increment);
// When the whole group has yielded axially.
void WriteTXTCapacityStop(Engine& e, int increment);

// ---- XML output ------------------------------------------------------------------
void WriteXMLHeader(Engine& e);
void WriteXMLInput(Engine& e);
void WriteXMLOutputStart(Engine& e);
// The group tables (flags 21, 22 of a linear run); t as above.
void WriteXMLGroupStiffness(Engine& e, const float t[6][6]);
void WriteXMLGroupFlexibility(Engine& e, const float t[6][6]);
// The results of an increment: the pile cap block (flag 25), whose values the host then
// receives (NotifyPileCap), and the piles block and, at the last increment, the summary
// of the increments.
bool WriteXMLPileCap(Engine& e);
void WriteXMLPiles(Engine& e, int increment);
// When the whole group has yielded axially.
void WriteXMLCapacityStop(Engine& e);
void WriteXMLOutputEnd(Engine& e);

}  // namespace quellon
