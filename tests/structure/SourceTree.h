// The project's own source files as text, for the tests that hold its structure. Read only.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace orvanel::structure {

/// One line `#include "path"` or `#include <path>`.
struct Include {
  std::string path;
  bool isQuoted = false;
  int line = 0;
};

struct SourceFile {
  std::string path;  ///< relative to the project, with forward slashes
  std::string text;

  [[nodiscard]] bool isHeader() const { return path.ends_with(".h"); }
  /// "file:line", as compilers name a place.
  [[nodiscard]] std::string at(int line) const { return path + ":" + std::to_string(line); }
};

/// The project's folder.
[[nodiscard]] std::filesystem::path projectFolder();

/// Every .h and .cpp file below one of the project's folders, sorted by path; none when it is missing.
[[nodiscard]] std::vector<SourceFile> sourceFiles(const std::string& folder);

/// The whole text of a file, empty when it can't be read.
[[nodiscard]] std::string readText(const std::filesystem::path& path);

[[nodiscard]] std::vector<Include> includesOf(const SourceFile& file);

}  // namespace orvanel::structure
