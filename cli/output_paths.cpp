#include "output_paths.h"

#include <filesystem>
#include <system_error>
#include <utility>
#include <vector>

namespace quellon_cli {

namespace fs = std::filesystem;

namespace {

constexpr const char* kTemporarySuffix = ".part";

// Paths are UTF-8 text throughout the CLI. On Windows std::filesystem converts narrow
// strings with the C library's locale rather than the process's code page, which fails
// on letters outside ASCII; going through char8_t makes the conversion UTF-8 there. On
// POSIX systems the bytes pass unchanged either way.
fs::path PathOf(const std::string& text) {
#ifdef _WIN32
  return fs::path(std::u8string(text.begin(), text.end()));
#else
  return fs::path(text);
#endif
}

std::string TextOf(const fs::path& path) {
#ifdef _WIN32
  const std::u8string text = path.u8string();
  return std::string(text.begin(), text.end());
#else
  return path.string();
#endif
}

// The absolute, normalised form of a path whose file need not exist yet: the existing
// part resolved (links followed), the rest appended and normalised by its text.
fs::path Resolved(const std::string& path) {
  std::error_code ec;
  const fs::path absolute = fs::absolute(PathOf(path), ec);
  if (ec) return PathOf(path).lexically_normal();
  fs::path canonical = fs::weakly_canonical(absolute, ec);
  if (ec) return absolute.lexically_normal();
  return canonical;
}

struct Named {
  std::string role;  // "the XML output", ...
  std::string path;
};

}  // namespace

// Equal once resolved, or the same file on disk (a hard link, or a name that differs only
// in case where the file system ignores case).
bool SameFile(const std::string& a, const std::string& b) {
  if (Resolved(a) == Resolved(b)) return true;
  std::error_code ec;
  return fs::equivalent(PathOf(a), PathOf(b), ec) && !ec;
}

std::string StemOf(const std::string& path) { return TextOf(PathOf(path).replace_extension()); }

std::string TemporaryName(const std::string& final_path) { return final_path + kTemporarySuffix; }

std::string FailedLogName(const std::string& log_path) {
  const fs::path p = PathOf(log_path);
  const std::string stem = TextOf(p.stem()), ext = TextOf(p.extension());
  if (stem.empty()) return log_path + ".failed";
  fs::path failed = p;
  failed.replace_filename(PathOf(stem + ".failed" + ext));
  return TextOf(failed);
}

std::string CheckPaths(const std::string& model, const OutputSet& outputs, bool with_temporaries) {
  if (model.size() > kEnginePathLimit)
    return "the model path is " + std::to_string(model.size()) + " characters long; the engine takes at most " +
           std::to_string(kEnginePathLimit);
  std::vector<Named> files;
  const std::pair<const char*, const std::string*> roles[] = {
      {"the XML output", &outputs.xml},
      {"the TXT report", &outputs.txt},
      {"the LOG", &outputs.log},
      {"the cases document", &outputs.cases}};
  for (const auto& [role, path] : roles) {
    if (path->empty()) continue;
    // The engine opens the temporary name, which is the longer one.
    const std::size_t suffix = with_temporaries ? std::string(kTemporarySuffix).size() : 0;
    if (path->size() + suffix > kEnginePathLimit)
      return std::string(role) + " path " + *path + " is too long (" + std::to_string(path->size()) +
             " characters): the engine takes at most " + std::to_string(kEnginePathLimit - suffix) +
             (with_temporaries ? " for an output, which it writes as " + TemporaryName("NAME") + " first" : "");
    files.push_back({role, *path});
  }
  if (with_temporaries) {
    const std::size_t n = files.size();
    for (std::size_t i = 0; i < n; ++i) files.push_back({files[i].role + "'s temporary file", TemporaryName(files[i].path)});
    if (!outputs.log.empty()) files.push_back({"the LOG of a failed run", FailedLogName(outputs.log)});
  }
  for (std::size_t i = 0; i < files.size(); ++i) {
    if (SameFile(files[i].path, model))
      return files[i].role + " " + files[i].path + " names the model file " + model;
    for (std::size_t j = 0; j < i; ++j)
      if (SameFile(files[i].path, files[j].path))
        return files[j].role + " " + files[j].path + " and " + files[i].role + " " + files[i].path +
               " name the same file";
  }
  return "";
}

std::string MakeFolder(const std::string& dir) {
  std::error_code ec;
  fs::create_directories(PathOf(dir), ec);
  if (ec) return "cannot create the folder " + dir + ": " + ec.message();
  if (!fs::is_directory(PathOf(dir), ec)) return dir + " is not a folder";
  return "";
}

std::string CheckFolders(const OutputSet& outputs) {
  for (const std::string* path : {&outputs.xml, &outputs.txt, &outputs.log, &outputs.cases}) {
    if (path->empty()) continue;
    const fs::path p = PathOf(*path);
    std::error_code ec;
    if (fs::is_directory(p, ec)) return *path + " is a folder, not a file";
    const fs::path folder = p.has_parent_path() ? p.parent_path() : fs::path(".");
    const fs::file_status status = fs::status(folder, ec);
    if (ec && ec != std::errc::no_such_file_or_directory) return "cannot use the folder of " + *path + ": " + ec.message();
    if (!fs::exists(status))
      return "the folder of " + *path + " does not exist: " + std::make_error_code(std::errc::no_such_file_or_directory).message();
    if (!fs::is_directory(status)) return "the folder of " + *path + " is not a folder";
  }
  return "";
}

std::string CommitOutputs(const OutputSet& outputs) {
  for (const std::string* path : {&outputs.xml, &outputs.txt, &outputs.log, &outputs.cases}) {
    if (path->empty()) continue;
    std::error_code ec;
    fs::rename(PathOf(TemporaryName(*path)), PathOf(*path), ec);
    if (ec) return "cannot move " + TemporaryName(*path) + " to " + *path + ": " + ec.message();
  }
  return "";
}

std::string DiscardOutputs(const OutputSet& outputs) {
  std::error_code ec;
  for (const std::string* path : {&outputs.xml, &outputs.txt, &outputs.cases})
    if (!path->empty()) fs::remove(PathOf(TemporaryName(*path)), ec);
  const fs::path log = PathOf(TemporaryName(outputs.log));
  if (!fs::exists(log, ec)) return "";
  const std::string kept = FailedLogName(outputs.log);
  fs::rename(log, PathOf(kept), ec);
  return ec ? TemporaryName(outputs.log) : kept;
}

}  // namespace quellon_cli
