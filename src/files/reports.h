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
// From CalcStiffnessDisplsStressesLoads: the coefficient tables of a linear run
// (flags 21, 22). t: 6 by 6, row-major t[a][b], external axes, scaled and cut.
void WriteTXTGroupStiffness(Engine& e, const float t[6][6]);
void WriteTXTGroupFlexibility(Engine& e, const float t[6][6]);
// After SplitSoilDisplacements: the incremental displacements (17).
void PrintIncrementalDisplacements(Engine& e);
// From Update after the softening: G (5) and GD (6) of a non-linear run.
void PrintNonLinearMatrices(Engine& e, int increment);
// From Update: the result tables of the increment.
void WriteTXTIncrementResults(Engine& e, int increment);
// From Update when the whole group has yielded axially.
void WriteTXTCapacityStop(Engine& e, int increment);

// ---- XML output ------------------------------------------------------------------
void WriteXMLHeader(Engine& e);
void WriteXMLInput(Engine& e);
void WriteXMLOutputStart(Engine& e);
// From CalcStiffnessDisplsStressesLoads (flags 21, 22 of a linear run); t as above.
void WriteXMLGroupStiffness(Engine& e, const float t[6][6]);
void WriteXMLGroupFlexibility(Engine& e, const float t[6][6]);
// From Update: the pile cap block with its callbacks, the piles block and, at the
// last increment, the summary of the increments.
void WriteXMLIncrement(Engine& e, int increment);
// From Update when the whole group has yielded axially.
void WriteXMLCapacityStop(Engine& e);
void WriteXMLOutputEnd(Engine& e);

}  // namespace quellon
