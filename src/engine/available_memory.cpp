#include "engine/available_memory.h"

#if defined(_WIN32)
#include <windows.h>
#else
#include <sys/resource.h>
#include <unistd.h>
#endif

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace quellon {

namespace {

constexpr std::uint64_t kUnknown = UINT64_MAX;
constexpr std::uint64_t kMiB = 1024u * 1024u;

}  // namespace

#if defined(_WIN32)

// Windows commits memory when it is allocated, so a request beyond the commit limit
// fails at once; the probe still keeps a run from paging the machine to a standstill.
// The three figures: free physical memory, what the commit limit still allows (in the
// place of a cgroup's limit), and the free user address space.
namespace {

bool MemoryStatus(MEMORYSTATUSEX& status) {
  status = MEMORYSTATUSEX{};
  status.dwLength = sizeof status;
  return GlobalMemoryStatusEx(&status) != 0;
}

}  // namespace

std::uint64_t MachineAvailableBytes() {
  MEMORYSTATUSEX status;
  return MemoryStatus(status) ? status.ullAvailPhys : kUnknown;
}

std::uint64_t CgroupAvailableBytes() {
  MEMORYSTATUSEX status;
  return MemoryStatus(status) ? status.ullAvailPageFile : kUnknown;
}

std::uint64_t AddressSpaceAvailableBytes() {
  MEMORYSTATUSEX status;
  return MemoryStatus(status) ? status.ullAvailVirtual : kUnknown;
}

#else

namespace {

// The first unsigned number in a small file, or kUnknown. cgroup files hold "max" for
// no limit, which reads as no number.
std::uint64_t ReadNumber(const char* path) {
  std::FILE* f = std::fopen(path, "r");
  if (f == nullptr) return kUnknown;
  unsigned long long v = 0;
  const int got = std::fscanf(f, "%llu", &v);
  std::fclose(f);
  return got == 1 ? static_cast<std::uint64_t>(v) : kUnknown;
}

std::uint64_t Difference(std::uint64_t limit, std::uint64_t used) {
  if (limit == kUnknown || used == kUnknown) return kUnknown;
  return limit > used ? limit - used : 0;
}

}  // namespace

std::uint64_t MachineAvailableBytes() {
  std::FILE* f = std::fopen("/proc/meminfo", "r");
  if (f == nullptr) return kUnknown;
  char line[256];
  std::uint64_t result = kUnknown;
  while (std::fgets(line, sizeof line, f) != nullptr) {
    unsigned long long kb = 0;
    if (std::strncmp(line, "MemAvailable:", 13) == 0 && std::sscanf(line + 13, "%llu", &kb) == 1) {
      result = static_cast<std::uint64_t>(kb) * 1024u;
      break;
    }
  }
  std::fclose(f);
  return result;
}

std::uint64_t CgroupAvailableBytes() {
  // cgroup v2 first, then v1. A v1 limit that means "none" is a number near 2^63, which
  // leaves a difference larger than any machine, as it should.
  std::uint64_t v2 = Difference(ReadNumber("/sys/fs/cgroup/memory.max"), ReadNumber("/sys/fs/cgroup/memory.current"));
  if (v2 != kUnknown) return v2;
  return Difference(ReadNumber("/sys/fs/cgroup/memory/memory.limit_in_bytes"),
                    ReadNumber("/sys/fs/cgroup/memory/memory.usage_in_bytes"));
}

std::uint64_t AddressSpaceAvailableBytes() {
  rlimit limit{};
  if (getrlimit(RLIMIT_AS, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY) return kUnknown;
  // The first field of statm is the size of the address space in use, in pages.
  const std::uint64_t pages = ReadNumber("/proc/self/statm");
  const long page_size = sysconf(_SC_PAGESIZE);
  if (pages == kUnknown || page_size <= 0) return kUnknown;
  return Difference(static_cast<std::uint64_t>(limit.rlim_cur), pages * static_cast<std::uint64_t>(page_size));
}

#endif

std::uint64_t AvailableMemoryBytes() {
  const std::uint64_t least =
      std::min({MachineAvailableBytes(), CgroupAvailableBytes(), AddressSpaceAvailableBytes()});
  if (least == kUnknown) return kUnknown;
  // Keep back a sixteenth, and at least 64 MiB.
  const std::uint64_t reserve = std::max(least / 16, 64 * kMiB);
  return least > reserve ? least - reserve : 0;
}

}  // namespace quellon
