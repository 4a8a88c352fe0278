// Per-pile tables of the TXT report: one column per pile, one row per element, from a
// group vector that holds n rows per pile (n + 1 with the base row), pile after pile.
// Piles are headed by their numbers. Each routine does nothing on a closed sink.
#pragma once

#include "engine/arrays.h"
#include "files/report_out.h"

namespace quellon {

struct Engine;

// Panels of six piles, the element rows in the sci form.
void PrintPileTable(const Engine& e, ReportOut& out, const RealVector& table, bool base_row);
// As PrintPileTable, with a head row (one value per pile, in the frac form) above the
// element rows.
void PrintPileTableWithHead(const Engine& e, ReportOut& out, const RealVector& head, const RealVector& table,
                            bool base_row);
// Yield states 1 or 0 from row `row` (1 to 4) of Yielded, panels of twenty piles.
void PrintYieldTable(const Engine& e, ReportOut& out, const LogicalMatrix& yielded, int row, bool base_row);

}  // namespace quellon
