// The engine's own dense solver: Crout's LU factorisation with implicit partial
// pivoting, in single precision, in place on a column-major matrix of leading
// dimension lda, and the solve of an increment's system. The LAPACK route is in lapack.h.
#pragma once

namespace quellon {

struct Workspace;

// Factorises the n by n matrix a in place into L (unit diagonal, below) and U. indx(j)
// (from 1) receives the row that became row j; scale is a work vector of n reals; sign
// becomes +1 or -1 with the parity of the interchanges. Each row is weighed by the
// inverse of its largest element, and among equal merits the last row wins. A pivot
// smaller than 1e-20 in magnitude is replaced by 1e-20 and the factorisation goes on;
// only a row whose every element is below 1e-20 is fatal: the result is then 0 and a
// is left partly scaled, otherwise 1. Blocked and shared among the threads, with the
// factors of the column-by-column method bit for bit.
int LUDecompose(float* a, int n, int lda, int* indx, float* scale, float& sign);

// Solves with the factors of LUDecompose for the six columns of B (leading dimension
// ldb) at once: B is overwritten with the solution. Each side's forward sweep starts at
// its first non-zero entry after the row interchanges. The multipliers of L in a are
// overwritten (the factors are of no further use to the solve).
void LUSolveSixSides(float* a, int n, int lda, const int* indx, float* B, int ldb);

// GD = G + D, with D from its diagonal blocks.
void FormSystemMatrix(Workspace& w);

}  // namespace quellon
