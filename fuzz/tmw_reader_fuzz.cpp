// libFuzzer entry for the text model reader. Each input is taken as a model file: it is
// read into a fresh engine as READTMWFILEDIRECT reads a host's file, and a model that
// reads well is written back as a TMK file and then analysed: a small one by a whole
// run (checks, assembly, increments, reports), a larger one only as far as the model
// checks, which are quick at any size. The sanitizers turn any bad access, leak or
// undefined operation on the way into a crash that the fuzzer keeps.
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <string>

#include "engine/engine.h"
#include "engine/model_checks.h"
#include "engine/run_analysis.h"
#include "files/text_model.h"
#include "solution/solution.h"

namespace {

// A machine with 1 MB to spare: a file that asks for thousands of piles or layers is
// refused by the tables' memory check, as on a small machine, instead of filling
// megabytes at each input.
std::uint64_t SmallMachine() { return std::uint64_t{1} << 20; }

// The reader takes its input from a file. In memory (/dev/shm) where the system has it,
// since a file is written and read back at every input.
std::string ScratchPath(const char* name) {
  const char* folder = access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp";
  return std::string(folder) + "/quellon_fuzz_" + std::to_string(getpid()) + "_" + name;
}

bool WriteInput(const std::string& path, const std::uint8_t* data, std::size_t size) {
  std::FILE* f = std::fopen(path.c_str(), "wb");
  if (f == nullptr) return false;
  const bool ok = std::fwrite(data, 1, size, f) == size;
  return std::fclose(f) == 0 && ok;
}

// The scratch files, removed when the fuzzer exits in order.
struct ScratchFiles {
  const std::string input = ScratchPath("input.tmw");
  const std::string output = ScratchPath("output.tmk");
  const std::string xml = ScratchPath("run.xml");
  const std::string txt = ScratchPath("run.txt");
  ~ScratchFiles() {
    for (const std::string* path : {&input, &output, &xml, &txt}) std::remove(path->c_str());
  }
};

// A model that a whole run analyses in a few milliseconds.
bool SmallEnoughToRun(const quellon::Engine& e) {
  return e.foundation.NumberOfPiles <= 3 && e.foundation.NumberOfElements <= 4 &&
         e.actions.NumberOfIncrements <= 4 && e.borehole.NumberOfLayers <= 6;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const ScratchFiles files;
  const std::string& input = files.input;
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

  quellon::CreateTMKFile(e, files.output);
  if (SmallEnoughToRun(e)) {
    quellon::RunAnalysis(e, files.xml, files.txt);
  } else {
    quellon::PrepareGroupGeometry(e);
    quellon::CheckModel(e);
  }
  return 0;
}
