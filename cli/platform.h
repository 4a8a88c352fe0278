// The few operating-system calls of the command-line host that differ between POSIX
// systems and Windows, under one set of names.
#pragma once

#include <cstddef>
#include <string>

#if defined(_WIN32)
#include <direct.h>
#include <io.h>
#include <stdio.h>
#else
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace quellon_cli {

#if defined(_WIN32)
constexpr int kStdoutFd = 1;

inline int MakeDirectory(const std::string& path) { return _mkdir(path.c_str()); }
inline bool IsTerminal(int fd) { return _isatty(fd) != 0; }
inline int DupFd(int fd) { return _dup(fd); }
inline int Dup2Fd(int from, int to) { return _dup2(from, to); }
inline int CloseFd(int fd) { return _close(fd); }
inline std::FILE* OpenFd(int fd, const char* mode) { return _fdopen(fd, mode); }
inline long long FdOffset(int fd) { return _lseeki64(fd, 0, SEEK_CUR); }
// No pread: the descriptor shares its offset with its duplicates, so the read moves
// there and back.
inline long long ReadAt(int fd, char* buffer, std::size_t count, long long offset) {
  const long long saved = _lseeki64(fd, 0, SEEK_CUR);
  if (saved < 0 || _lseeki64(fd, offset, SEEK_SET) < 0) return -1;
  const int got = _read(fd, buffer, static_cast<unsigned>(count));
  _lseeki64(fd, saved, SEEK_SET);
  return got;
}
#else
constexpr int kStdoutFd = STDOUT_FILENO;

inline int MakeDirectory(const std::string& path) { return mkdir(path.c_str(), 0777); }
inline bool IsTerminal(int fd) { return isatty(fd) != 0; }
inline int DupFd(int fd) { return dup(fd); }
inline int Dup2Fd(int from, int to) { return dup2(from, to); }
inline int CloseFd(int fd) { return close(fd); }
inline std::FILE* OpenFd(int fd, const char* mode) { return fdopen(fd, mode); }
inline long long FdOffset(int fd) { return lseek(fd, 0, SEEK_CUR); }
inline long long ReadAt(int fd, char* buffer, std::size_t count, long long offset) {
  return pread(fd, buffer, count, static_cast<off_t>(offset));
}
#endif

}  // namespace quellon_cli
