// What the host tests share: a scratch folder per test, file and event reading, a small
// valid model entered call by call, and a fixture that leaves the engine clean.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

namespace host {

namespace fs = std::filesystem;

// The engine's text files end every line in CR LF; this splits on that and fails the
// test on a bare LF.
std::vector<std::string> ReadLines(const fs::path& path);
std::string ReadAll(const fs::path& path);
void WriteFile(const fs::path& path, const std::string& text);

// The recorder's lines.
std::vector<std::string> Events();
// The events that are messages of the given severity, texts only.
std::vector<std::string> Messages(const std::vector<std::string>& events, int severity);

// Index of the first line equal to text at or after from; npos if none.
std::size_t Find(const std::vector<std::string>& lines, const std::string& text, std::size_t from = 0);
std::size_t Count(const std::vector<std::string>& lines, const std::string& text);

// Resident memory of this process, in bytes.
long long ResidentBytes();

// A valid model of `piles` piles in a row, 3 m apart, `layers` clay layers, `elements`
// shaft elements and `increments` load increments under a vertical load with a small
// horizontal one; the flags ask for the cap block (25) and the dense solver (16). The
// tables are created here.
void EnterModel(int piles, int layers, int elements, int increments);
// The same, for tables that exist already.
void FillModel(int piles, int layers, int elements, int increments);

class HostTest : public ::testing::Test {
 protected:
  void SetUp() override;
  // Closes every file and clears every registration, so that the next test in this
  // process finds the engine as a newly loaded host would, apart from the model reset.
  void TearDown() override;
  fs::path dir;
  fs::path Path(const std::string& name) const { return dir / name; }
};

}  // namespace host
