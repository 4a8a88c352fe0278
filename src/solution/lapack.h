// The engine's one way into LAPACK. The solution is single precision throughout, so
// only SGESV is declared; the library is OpenBLAS with 32-bit integers, and every matrix
// passed is column-major with an explicit leading dimension.
#pragma once

extern "C" {
// Solves A X = B by LU factorisation with partial pivoting. A (n by n) is overwritten
// with its factors, ipiv with the row interchanges, B (n by nrhs) with the solution.
// info: 0 success, -i argument i illegal, i > 0 U(i, i) exactly zero.
void sgesv_(const int* n, const int* nrhs, float* a, const int* lda, int* ipiv, float* b, const int* ldb,
            int* info);
}

namespace quellon {

// The one wrapper: solves in place and gives LAPACK's info unchanged, 0 on success.
inline int LapackSolve(int n, int nrhs, float* a, int lda, int* ipiv, float* b, int ldb) {
  int info = 0;
  sgesv_(&n, &nrhs, a, &lda, ipiv, b, &ldb, &info);
  return info;
}

}  // namespace quellon
