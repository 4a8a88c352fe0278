// libFuzzer entry for the text model reader: each input is taken as a model file and
// replayed as fuzz/model_replay.h tells, from the read to a run of a small model. The
// sanitizers turn any bad access, leak or undefined operation on the way into a crash
// that the fuzzer keeps; a read that leaves the tables unlike their counts is one too.
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <string>

#include "model_replay.h"

namespace {

// The reader takes its input from a file. In memory (/dev/shm) where the system has it,
// since a file is written and read back at every input.
std::string ScratchPath(const char* name) {
  const char* folder = access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp";
  return std::string(folder) + "/quellon_fuzz_" + std::to_string(getpid()) + "_" + name;
}

// The scratch files, removed when the fuzzer exits in order.
struct ScratchFiles {
  const quellon::fuzzing::ReplayPaths paths{ScratchPath("input.tmw"), ScratchPath("output.tmk"),
                                            ScratchPath("run.xml"), ScratchPath("run.txt")};
  ~ScratchFiles() {
    for (const std::string* path : {&paths.input, &paths.tmk, &paths.xml, &paths.txt}) std::remove(path->c_str());
  }
};

bool WriteInput(const std::string& path, const std::uint8_t* data, std::size_t size) {
  std::FILE* f = std::fopen(path.c_str(), "wb");
  if (f == nullptr) return false;
  const bool ok = std::fwrite(data, 1, size, f) == size;
  return std::fclose(f) == 0 && ok;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const ScratchFiles files;
  if (!WriteInput(files.paths.input, data, size)) return 0;
  if (!quellon::fuzzing::ReplayModelFile(files.paths).tables_match) __builtin_trap();
  return 0;
}
