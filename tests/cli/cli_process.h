// Runs the command-line host as a user does, from a shell, and keeps what it printed
// (standard output and standard error together) with its exit status.
#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <string>

namespace quellon_cli_test {

struct Outcome {
  int status = -1;  // the exit status, or -1 if the program did not exit normally
  std::string output;
};

// quellon with the given arguments, started in `dir` when one is given, so that
// relative paths are the user's.
inline Outcome RunCli(const std::string& args, const std::string& dir = "") {
  Outcome o;
  const std::string command =
      (dir.empty() ? "" : "cd '" + dir + "' && ") + std::string(QUELLON_CLI_PATH) + " " + args + " 2>&1";
  FILE* pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) return o;
  char buffer[4096];
  std::size_t n;
  while ((n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0) o.output.append(buffer, n);
  const int raw = pclose(pipe);
  o.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
  return o;
}

// An empty folder of its own under the system's temporary folder, for one test.
inline std::filesystem::path Scratch(const std::string& name) {
  const std::filesystem::path dir =
      std::filesystem::temp_directory_path() / ("quellon-cli-" + name + "-" + std::to_string(::getpid()));
  std::filesystem::remove_all(dir);
  std::filesystem::create_directories(dir);
  return dir;
}

}  // namespace quellon_cli_test
