#include "engine/background_work.h"

namespace quellon {

namespace {

template <class T>
std::size_t Bytes(const std::vector<Mat<T>>& arrays) {
  std::size_t bytes = 0;
  for (const Mat<T>& a : arrays) bytes += a.count() * sizeof(T);
  return bytes;
}

}  // namespace

void BackgroundRelease::Take(std::vector<RealMatrix>&& real, std::vector<IntegerMatrix>&& integer) {
  task_.Wait();
  std::vector<RealMatrix> r = std::move(real);
  std::vector<IntegerMatrix> k = std::move(integer);
  if (!kReleaseInBackground || Bytes(r) + Bytes(k) < threshold) return;  // freed here, as r and k go
  // The arrays move into the thread's callable; should the thread not start, the
  // callable is destroyed here and frees them at once.
  task_.Start([real_arrays = std::move(r), integer_arrays = std::move(k)]() mutable {
    real_arrays.clear();
    integer_arrays.clear();
  });
}

}  // namespace quellon
