// Shared by the engine's internal tests: scratch folders, the LOG read back, a message
// recorder, a small valid model written straight into the records, and a way to put
// the engine behind the C API back to its state at load.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "engine/engine.h"

namespace quellon::testing_support {

namespace fs = std::filesystem;

// A fresh folder under the system's temporary folder, removed at the end of scope.
class ScratchDir {
 public:
  ScratchDir();
  ~ScratchDir();
  ScratchDir(const ScratchDir&) = delete;
  ScratchDir& operator=(const ScratchDir&) = delete;
  fs::path operator/(const std::string& name) const { return path_ / name; }

 private:
  fs::path path_;
};

// The lines of a CR LF text file, without their ends.
std::vector<std::string> ReadLines(const fs::path& path);
std::size_t Find(const std::vector<std::string>& lines, const std::string& text, std::size_t from = 0);

// Messages sent to the host through the message callback, as "<severity> <text>".
std::vector<std::string>& Received();
void RecordMessage(const int* severity, const char* text);

// One clay layer, `piles` piles 3 m apart with `elements` shaft elements each, a
// vertical load in `increments` steps; the tables are created in the records.
void FillSmallModel(Engine& e, int piles, int elements, int increments);

// The engine behind the C API as at load: files closed, records zero, nothing
// registered, no workspace.
void ResetTheEngine();

// Total elements held by the workspace's arrays.
std::size_t WorkspaceElements(Workspace& w);

}  // namespace quellon::testing_support
