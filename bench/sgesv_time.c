/* One SGESV call timed alone, to compare the LAPACK libraries a build can carry: an N by N
 * single-precision system with 6 right-hand sides (the unit columns of a group solve),
 * a diagonally dominant matrix of fixed pseudo-random entries. Prints N, LAPACK's info,
 * the seconds of the call and a checksum of the solution (the same for every library to
 * rounding). Not part of the CMake build: it is linked by hand against each library.
 *
 *   Linux, the system's OpenBLAS:
 *     gcc -O2 bench/sgesv_time.c -lopenblas -o sgesv_time
 *   Windows, against the LAPACK a build of scripts/build-windows.sh carries (run under wine):
 *     x86_64-w64-mingw32-gcc-posix -O2 bench/sgesv_time.c -static -o sgesv_time.exe \
 *       build-windows/deps/lapack/lib/liblapack.a build-windows/deps/lapack/lib/libblas.a \
 *       -lgfortran -lquadmath                      # reference LAPACK
 *     x86_64-w64-mingw32-gcc-posix -O2 bench/sgesv_time.c -static -o sgesv_time.exe \
 *       build-windows/deps/openblas/lib/libopenblas.a   # OpenBLAS (--openblas)
 *
 *   sgesv_time [N]      N defaults to 5184, a group of 64 piles of 20 elements */
#define _POSIX_C_SOURCE 199309L
#include <stdio.h>
#include <stdlib.h>
#ifdef _WIN32
#include <windows.h>
static double Seconds(void) {
  LARGE_INTEGER frequency, count;
  QueryPerformanceFrequency(&frequency);
  QueryPerformanceCounter(&count);
  return (double)count.QuadPart / (double)frequency.QuadPart;
}
#else
#include <time.h>
static double Seconds(void) {
  struct timespec t;
  clock_gettime(CLOCK_MONOTONIC, &t);
  return (double)t.tv_sec + (double)t.tv_nsec * 1e-9;
}
#endif

void sgesv_(const int* n, const int* nrhs, float* a, const int* lda, int* ipiv, float* b,
            const int* ldb, int* info);

int main(int argc, char** argv) {
  const int n = argc > 1 ? atoi(argv[1]) : 5184;
  const int nrhs = 6;
  const size_t columns = 6;
  if (n <= 0) {
    fprintf(stderr, "usage: sgesv_time [N]\n");
    return 2;
  }
  const size_t count = (size_t)n * (size_t)n;
  float* a = malloc(sizeof(float) * count);
  float* b = malloc(sizeof(float) * (size_t)n * columns);
  int* pivots = malloc(sizeof(int) * (size_t)n);
  if (a == NULL || b == NULL || pivots == NULL) {
    fprintf(stderr, "out of memory for N = %d\n", n);
    return 1;
  }
  /* Entries in [-0.5, 0.5) from a linear congruential sequence, and a diagonal of n/10:
     well conditioned, so every library pivots the same way and the checksums agree. */
  unsigned state = 12345u;
  for (size_t i = 0; i < count; ++i) {
    state = state * 1664525u + 1013904223u;
    a[i] = (float)(state >> 8) / 16777216.0f - 0.5f;
  }
  for (int i = 0; i < n; ++i) a[(size_t)i * (size_t)n + (size_t)i] += (float)n * 0.1f;
  for (size_t i = 0; i < (size_t)n * columns; ++i) b[i] = 1.0f;

  int info = 0;
  const double start = Seconds();
  sgesv_(&n, &nrhs, a, &n, pivots, b, &n, &info);
  const double elapsed = Seconds() - start;

  double checksum = 0.0;
  for (size_t i = 0; i < (size_t)n * columns; ++i) checksum += (double)b[i];
  printf("N=%d info=%d seconds=%.3f checksum=%.6g\n", n, info, elapsed, checksum);
  free(a);
  free(b);
  free(pivots);
  return info == 0 ? 0 : 1;
}
