// The engine's arrays: vectors and column-major matrices indexed from 1, owning their
// storage. The 1-based accessors let the formulas read as the mechanics are written;
// data() and ld() hand the raw storage to LAPACK.
#pragma once

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <type_traits>
#include <utility>
#include <vector>

namespace quellon {

template <class T>
class Vec {
 public:
  Vec() = default;

  int size() const { return n_; }
  bool empty() const { return n_ == 0; }
  T& operator()(int i) {
    assert(i >= 1 && i <= n_);
    return v_[static_cast<std::size_t>(i - 1)];
  }
  const T& operator()(int i) const {
    assert(i >= 1 && i <= n_);
    return v_[static_cast<std::size_t>(i - 1)];
  }
  T* data() { return v_.data(); }
  const T* data() const { return v_.data(); }
  void fill(T value) { std::fill(v_.begin(), v_.end(), value); }

  // Storage management; the workspace's creation routines are the engine's way in.
  // resize() may throw std::bad_alloc; on success every element is zero.
  void resize(int n) {
    std::vector<T> fresh(static_cast<std::size_t>(n > 0 ? n : 0), T{});
    v_.swap(fresh);
    n_ = n > 0 ? n : 0;
  }
  void release() {
    std::vector<T>().swap(v_);
    n_ = 0;
  }

 private:
  std::vector<T> v_;
  int n_ = 0;
};

// The storage of a matrix comes from calloc: the pages of a large block come from the
// system already zeroed, so a matrix of hundreds of megabytes costs no pass of its own
// to clear, and the first write to each page (the assembly's) is the only touch.
template <class T>
class Mat {
  static_assert(std::is_trivially_copyable_v<T>, "Mat holds plain numbers");

 public:
  Mat() = default;
  Mat(const Mat& o) { *this = o; }
  Mat(Mat&& o) noexcept { swap(o); }
  Mat& operator=(const Mat& o) {
    if (this == &o) return *this;
    Mat copy;
    copy.resize(o.rows_, o.cols_);
    if (o.count() > 0) std::memcpy(copy.v_, o.v_, o.count() * sizeof(T));
    swap(copy);
    return *this;
  }
  Mat& operator=(Mat&& o) noexcept {
    Mat gone;
    gone.swap(o);
    swap(gone);
    return *this;
  }
  ~Mat() { std::free(v_); }

  int rows() const { return rows_; }
  int cols() const { return cols_; }
  int ld() const { return rows_; }
  bool empty() const { return rows_ == 0 || cols_ == 0; }
  std::size_t index(int i, int j) const {
    return static_cast<std::size_t>(i - 1) + static_cast<std::size_t>(j - 1) * static_cast<std::size_t>(rows_);
  }
  T& operator()(int i, int j) {
    assert(i >= 1 && i <= rows_ && j >= 1 && j <= cols_);
    return v_[index(i, j)];
  }
  const T& operator()(int i, int j) const {
    assert(i >= 1 && i <= rows_ && j >= 1 && j <= cols_);
    return v_[index(i, j)];
  }
  // Column j (from 1) as contiguous storage of rows() elements.
  T* col(int j) { return v_ + static_cast<std::size_t>(j - 1) * static_cast<std::size_t>(rows_); }
  const T* col(int j) const { return v_ + static_cast<std::size_t>(j - 1) * static_cast<std::size_t>(rows_); }
  T* data() { return v_; }
  const T* data() const { return v_; }
  std::size_t count() const { return static_cast<std::size_t>(rows_) * static_cast<std::size_t>(cols_); }
  void fill(T value) { std::fill(v_, v_ + count(), value); }

  // Throws std::bad_alloc when the memory can't be had; on success every element is zero.
  void resize(int rows, int cols) {
    const int r = rows > 0 ? rows : 0;
    const int c = cols > 0 ? cols : 0;
    const std::size_t n = static_cast<std::size_t>(r) * static_cast<std::size_t>(c);
    T* fresh = nullptr;
    if (n > 0) {
      fresh = static_cast<T*>(std::calloc(n, sizeof(T)));
      if (fresh == nullptr) throw std::bad_alloc();
    }
    std::free(v_);
    v_ = fresh;
    rows_ = r;
    cols_ = c;
  }
  void release() {
    std::free(v_);
    v_ = nullptr;
    rows_ = cols_ = 0;
  }
  void swap(Mat& o) noexcept {
    std::swap(v_, o.v_);
    std::swap(rows_, o.rows_);
    std::swap(cols_, o.cols_);
  }

 private:
  T* v_ = nullptr;
  int rows_ = 0;
  int cols_ = 0;
};

using RealVector = Vec<float>;
using RealMatrix = Mat<float>;
using LogicalMatrix = Mat<std::int32_t>;
using LogicalVector = Vec<std::int32_t>;
using IntegerMatrix = Mat<std::int32_t>;
using IntegerVector = Vec<std::int32_t>;

}  // namespace quellon
