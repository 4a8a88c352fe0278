// How much memory a run may still take for its arrays.
//
// Linux overcommits: a request far beyond the machine is granted, and the process is
// killed later, when the zeros are written into pages that don't exist. The engine
// therefore asks before it allocates: a request larger than what the process can really
// be given counts as exhausted memory, and the run fails in order instead of dying.
#pragma once

#include <cstdint>

namespace quellon {

// The bytes this process can still obtain, under every limit in force:
//   - the kernel's estimate of available memory (MemAvailable);
//   - the cgroup's memory limit less its usage, when the process runs in one;
//   - the address-space limit (ulimit -v, RLIMIT_AS) less the address space in use.
// A reserve is kept back from the smallest of these, so that the process still has room
// for its small allocations (messages, file buffers, the solver's threads) when a large
// array has just been granted. UINT64_MAX when no limit can be read.
std::uint64_t AvailableMemoryBytes();

// The same figures, separately, for diagnostics and tests. UINT64_MAX where unknown.
std::uint64_t MachineAvailableBytes();   // MemAvailable
std::uint64_t CgroupAvailableBytes();    // limit - usage of the memory cgroup
std::uint64_t AddressSpaceAvailableBytes();  // RLIMIT_AS - VmSize

}  // namespace quellon
