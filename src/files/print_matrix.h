// Plain dumps of the run's matrices and vectors, as the TXT report shows them under
// the debugging flags. The caller writes the title line first; these write the size
// line and the numbers. Each does nothing on a closed sink, and otherwise starts with
// its trace line in the LOG.
#pragma once

#include <functional>

#include "engine/arrays.h"
#include "files/report_out.h"

namespace quellon {

struct Engine;

// The first `rows` rows and `cols` columns of a (clipped to its shape), in panels of
// seven columns, every row in every panel.
void PrintMatrix(Engine& e, ReportOut& out, const RealMatrix& a, int rows, int cols);
// The same for a matrix the engine doesn't hold whole (the group's D): at(i, j) gives
// entry (i, j), for i from 1 to rows and j from 1 to cols.
void PrintMatrix(Engine& e, ReportOut& out, int rows, int cols, const std::function<float(int, int)>& at);
// The first `size` elements of v, one per line.
void PrintVector(Engine& e, ReportOut& out, const RealVector& v, int size);

}  // namespace quellon
