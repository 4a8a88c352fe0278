// The block update of the blocked Crout factorisation: a region of a column-major matrix
// less the product of two other regions of the same matrix,
//
//   a(i, c) = a(i, c) - a(i, k) a(k, c), for k from k0 to k1 - 1 in turn,
//
// every product rounded to single precision and then subtracted, in rising k. That is the
// order in which the column-by-column method brings each entry up to date, so a
// factorisation built from these updates gives its factors bit for bit. The work is cut
// into register tiles that keep a small block of a(i, c) in vector registers while k runs
// (the structure of a matrix-product kernel, with a separate multiply and subtract where
// a product kernel would fuse them), and the tiles are shared among the threads. The
// widest vectors the processor has are used, chosen once at run time; every width gives
// the same bits, since each lane does the same scalar operations in the same order.
#pragma once

#include <cstddef>
#include <vector>

namespace quellon {

class ProductUpdate {
 public:
  // Makes room for updates of up to `rows` by `cols` entries with up to `depth` terms.
  // False when the memory cannot be had; the object then does nothing.
  bool Reserve(int rows, int cols, int depth);

  // The update above for rows i0 to i1 - 1 and columns c0 to c1 - 1 (indices from 0) of
  // the matrix a of leading dimension lda. The region updated must not overlap the two
  // it reads: k1 <= i0 and k1 <= c0. Sizes beyond those reserved are not allowed.
  void Apply(float* a, std::size_t lda, int i0, int i1, int c0, int c1, int k0, int k1);

 private:
  std::vector<float> packed_a_, packed_b_;
  int rows_ = 0, cols_ = 0, depth_ = 0;
};

}  // namespace quellon
