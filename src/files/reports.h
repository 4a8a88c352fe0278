// Report writers called during a run. Each checks its own unit (a closed unit means
// silence) and the flags that govern it, so callers call them unconditionally at the
// points of the run named below.
#pragma once

namespace quellon {

struct Engine;
struct Actions;
class TextFile;

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
// The two tables as those reports show them, from k and flex as above.
void GroupReportTables(const float k[36], const float flex[36], float kt[6][6], float ft[6][6]);
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
// The same echo of the input to another document, and the eight lines of its <Loads>
// (forces, moments, the point) at `indent` for any set of loads.
void WriteXMLInputEcho(const Engine& e, TextFile& out);
void WriteXMLLoadLines(TextFile& out, int indent, const Actions& loads);
void WriteXMLOutputStart(Engine& e);
// The group tables (flags 21, 22 of a linear run); t as above.
void WriteXMLGroupStiffness(Engine& e, const float t[6][6]);
void WriteXMLGroupFlexibility(Engine& e, const float t[6][6]);
// The results of an increment: the pile cap block (flag 25), whose values the host then
// receives (NotifyPileCap), and the piles block and, at the last increment, the summary
// of the increments.
bool WriteXMLPileCap(Engine& e);
void WriteXMLPiles(Engine& e, int increment);
// The blocks of one increment as the run's document holds them, written to another
// document (the load cases): <Pile-Group> of a linear run (flags 21, 22; kt and ft as
// above), <Pile-Cap> always, <Piles> (flags 27, 28, 31), each closed, at the run's
// indentation (the caller sets the other document's margin).
void WriteXMLIncrementBlocks(const Engine& e, TextFile& out, const float kt[6][6], const float ft[6][6]);
// When the whole group has yielded axially.
void WriteXMLCapacityStop(Engine& e);
void WriteXMLOutputEnd(Engine& e);

}  // namespace quellon
