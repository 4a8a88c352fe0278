// Where a run's outputs go, and how the host keeps an engineer's files safe while the
// engine writes them:
//
//   - before anything is opened, no output may name the model or another output (the
//     paths are compared resolved, so "./a/../m.tmw" is "m.tmw"), every path must fit the
//     engine's 260 characters, and every output's folder must exist;
//   - the engine writes each output to a temporary file beside its final name (FINAL.part,
//     in the same folder so that the move is a rename), and only a run that produced its
//     outputs moves them into place;
//   - a failed run removes its partial XML and TXT, leaves the earlier results as they
//     were, and keeps its LOG as STEM.failed.EXT beside the LOG (run.log: run.failed.log).
//
// The file system is reached through std::filesystem only, which serves POSIX and
// Windows alike.
#pragma once

#include <cstddef>
#include <string>

namespace quellon_cli {

// The longest path the engine takes.
constexpr std::size_t kEnginePathLimit = 260;

// The final names of a run's outputs; an empty name is an output not written.
struct OutputSet {
  std::string xml, txt, log;
  std::string cases = {};  // the document of the load cases, when the run has cases
};

// Where the engine writes an output while the run lasts.
std::string TemporaryName(const std::string& final_path);
// Where the LOG of a failed run is kept.
std::string FailedLogName(const std::string& log_path);

// The checks made before anything is opened. Each gives "" or a one-line reason.
// with_temporaries: the outputs go through their temporary names (a run), else they are
// written directly (the LOG of `check`).
std::string CheckPaths(const std::string& model, const OutputSet& outputs, bool with_temporaries);
// Creates a folder and its parents if missing.
std::string MakeFolder(const std::string& dir);
// Each output's folder exists and the output itself is not a folder.
std::string CheckFolders(const OutputSet& outputs);

// Whether two paths name one file: equal once resolved, or the same file on disk.
bool SameFile(const std::string& a, const std::string& b);
// The path without the extension of its file name ("out/m.xml": "out/m").
std::string StemOf(const std::string& path);

// After a run that produced its outputs: moves each temporary into place. "" or the
// reason a move failed.
std::string CommitOutputs(const OutputSet& outputs);
// After a failed run: removes the temporary XML and TXT and keeps the temporary LOG under
// FailedLogName. Gives the name of the kept LOG, or "" if the run wrote none.
std::string DiscardOutputs(const OutputSet& outputs);

}  // namespace quellon_cli
