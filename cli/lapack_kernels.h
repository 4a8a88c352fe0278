// Which kernels the LAPACK provider runs, where it can say: OpenBLAS picks them for the
// processor when it is loaded, and takes its generic ones, several times slower, for a
// processor newer than itself; the environment variable OPENBLAS_CORETYPE then names the
// kernels to take. Empty when the provider is not OpenBLAS or the platform can't ask.
#pragma once

#include <cstring>
#include <string>

#if !defined(_WIN32)
#include <dlfcn.h>
#endif

namespace quellon_cli {

inline std::string LapackKernels() {
#if defined(_WIN32)
  return {};
#else
  void* symbol = dlsym(RTLD_DEFAULT, "openblas_get_corename");
  if (symbol == nullptr) return {};
  char* (*corename)() = nullptr;
  static_assert(sizeof(corename) == sizeof(symbol));
  std::memcpy(&corename, &symbol, sizeof(corename));
  std::string text = std::string("OpenBLAS kernels ") + corename();
  const bool generic = text.find("Prescott") != std::string::npos || text.find("prescott") != std::string::npos;
#if defined(__x86_64__) || defined(__i386__)
  if (generic && __builtin_cpu_supports("avx2"))
    text += " (generic kernels on a processor with AVX2: set OPENBLAS_CORETYPE, e.g. SkylakeX or Haswell)";
#endif
  return text;
#endif
}

}  // namespace quellon_cli
