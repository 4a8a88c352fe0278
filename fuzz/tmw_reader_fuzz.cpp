// libFuzzer entry for the text model reader. Each input is taken as a model file: it is
// read into a fresh engine as READTMWFILEDIRECT reads a host's file, and a model that
// reads well goes on as a run would take it (soil entry points, the model checks) and is
// written back as a TMK file. The sanitizers turn any bad access, leak or undefined
// operation on the way into a crash that the fuzzer keeps.
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <string>

#include "engine/engine.h"
#include "engine/model_checks.h"
#include "files/text_model.h"
#include "solution/solution.h"

namespace {

// A machine with 64 MB to spare: a file that asks for millions of piles or layers is
// refused by the tables' memory check, as on a small machine, instead of filling
// gigabytes at each input.
std::uint64_t SmallMachine() { return std::uint64_t{64} << 20; }

std::string ScratchPath(const char* name) {
  return "/tmp/quellon_fuzz_" + std::to_string(getpid()) + "_" + name;
}

bool WriteInput(const std::string& path, const std::uint8_t* data, std::size_t size) {
  std::FILE* f = std::fopen(path.c_str(), "wb");
  if (f == nullptr) return false;
  const bool ok = std::fwrite(data, 1, size, f) == size;
  return std::fclose(f) == 0 && ok;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::string input = ScratchPath("input.tmw");
  static const std::string output = ScratchPath("output.tmk");
  if (!WriteInput(input, data, size)) return 0;

  quellon::Engine e;
  e.memory_probe = &SmallMachine;
  // The unit is opened here rather than through ReadTMWFile, which announces every file
  // on standard output.
  if (!e.files.tmw.open_for_reading(input)) return 0;
  e.project.TMWUnit = quellon::kTMWUnit;
  if (quellon::ReadTMWUnit(e, quellon::kTMWUnit) != 1) return 0;

  // A model that read well has its tables as long as its counts say.
  const auto piles = static_cast<std::size_t>(e.foundation.NumberOfPiles > 0 ? e.foundation.NumberOfPiles : 0);
  const auto layers = static_cast<std::size_t>(e.borehole.NumberOfLayers > 0 ? e.borehole.NumberOfLayers : 0);
  if (e.foundation.PileTable.size() != piles || e.borehole.LayerTable.size() != layers) __builtin_trap();

  quellon::PrepareGroupGeometry(e);
  quellon::CheckModel(e);
  quellon::CreateTMKFile(e, output);
  return 0;
}
