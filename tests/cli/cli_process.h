// Runs the command-line host as a user does, from a shell, and keeps what it printed
// (standard output and standard error together) with its exit status.
#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "../common/test_files.h"

namespace quellon_cli_test {

using namespace qtest;

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
inline fs::path Scratch(const std::string& name) {
  const fs::path dir = fs::temp_directory_path() / ("quellon-cli-" + name + "-" + std::to_string(::getpid()));
  fs::remove_all(dir);
  fs::create_directories(dir);
  return dir;
}

// The example with the first occurrence of from replaced by to, written into dir as name.
inline fs::path WriteEdited(const fs::path& dir, const std::string& name, const std::string& example,
                            const std::string& from, const std::string& to) {
  WriteBytes(dir / name, Edited(example, from, to));
  return dir / name;
}

// A CSV file the host wrote: its header row and the rows of text fields after it.
struct Csv {
  std::vector<std::string> header;
  std::vector<std::vector<std::string>> rows;
  std::size_t col(const std::string& name) const {
    for (std::size_t i = 0; i < header.size(); ++i)
      if (header[i] == name) return i;
    ADD_FAILURE() << "no column " << name;
    return 0;
  }
  double num(std::size_t row, const std::string& name) const {
    return std::strtod(rows[row][col(name)].c_str(), nullptr);
  }
};

inline std::vector<std::string> Fields(const std::string& line) {
  std::vector<std::string> f(1);
  bool quoted = false;
  for (std::size_t i = 0; i < line.size(); ++i) {
    const char c = line[i];
    if (quoted && c == '"' && i + 1 < line.size() && line[i + 1] == '"') {
      f.back() += '"';
      ++i;
    } else if (c == '"') {
      quoted = !quoted;
    } else if (c == ',' && !quoted) {
      f.emplace_back();
    } else {
      f.back() += c;
    }
  }
  return f;
}

inline Csv ReadCsv(const fs::path& path) {
  Csv csv;
  std::ifstream in(path, std::ios::binary);
  std::string line;
  while (std::getline(in, line)) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (csv.header.empty())
      csv.header = Fields(line);
    else
      csv.rows.push_back(Fields(line));
  }
  return csv;
}

}  // namespace quellon_cli_test
