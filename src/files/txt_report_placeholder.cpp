// Not written yet: the TXT report replaces this file.
#include "files/reports.h"

namespace quellon {

void WriteTXTInput(Engine&) {}
void PrintLimitingStresses(Engine&) {}
void WriteSinglePileMatrix(Engine&, int) {}
void PrintPileMatrix(Engine&, int) {}
void PrintIncrementHead(Engine&, int) {}
void PrintSolveVectors(Engine&) {}
void PrintUnitStresses(Engine&) {}
void PrintUnitHeadLoads(Engine&) {}
void WriteTXTGroupStiffness(Engine&, const float[6][6]) {}
void WriteTXTGroupFlexibility(Engine&, const float[6][6]) {}
void PrintIncrementalDisplacements(Engine&) {}
void PrintNonLinearMatrices(Engine&, int) {}
void WriteTXTIncrementResults(Engine&, int) {}
void WriteTXTCapacityStop(Engine&, int) {}

}  // namespace quellon
