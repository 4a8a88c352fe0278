// Stores that bypass the caches, for a matrix written once in a pass and read only by a
// later one (the system, before its factorisation): its lines need not be fetched from
// memory before they are overwritten, nor displace what the pass reads. Each store has
// the value a plain store would leave; only where it goes on its way differs.
#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace quellon {

// Copies count floats from src to dst (which must not overlap).
inline void StreamOut(float* dst, const float* src, int count) {
#if defined(__SSE2__)
  int k = 0;
  for (; k < count && (reinterpret_cast<std::uintptr_t>(dst + k) & 15u) != 0; ++k)
    _mm_stream_si32(reinterpret_cast<int*>(dst + k), std::bit_cast<int>(src[k]));
  for (; k + 4 <= count; k += 4) _mm_stream_ps(dst + k, _mm_loadu_ps(src + k));
  for (; k < count; ++k) _mm_stream_si32(reinterpret_cast<int*>(dst + k), std::bit_cast<int>(src[k]));
#else
  std::copy(src, src + count, dst);
#endif
}

// Orders the streamed stores before any later store of the thread: called at the end of
// a thread's share of a pass, before other threads may read what it wrote.
inline void StreamFence() {
#if defined(__SSE2__)
  _mm_sfence();
#endif
}

}  // namespace quellon
