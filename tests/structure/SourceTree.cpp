#include "structure/SourceTree.h"

#include <algorithm>
#include <fstream>
#include <regex>
#include <sstream>

namespace orvanel::structure {

std::filesystem::path projectFolder() {
  return ORVANEL_SOURCE_DIR;
}

std::string readText(const std::filesystem::path& path) {
  std::ostringstream text;
  text << std::ifstream(path, std::ios::binary).rdbuf();
  return text.str();
}

std::vector<SourceFile> sourceFiles(const std::string& folder) {
  std::vector<SourceFile> files;
  const auto root = projectFolder() / folder;
  if (!std::filesystem::is_directory(root)) return files;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
    const auto extension = entry.path().extension();
    if (!entry.is_regular_file() || (extension != ".h" && extension != ".cpp")) continue;
    files.push_back(
        {entry.path().lexically_relative(projectFolder()).generic_string(), readText(entry.path())});
  }
  std::sort(files.begin(), files.end(), [](const auto& a, const auto& b) { return a.path < b.path; });
  return files;
}

std::vector<Include> includesOf(const SourceFile& file) {
  static const std::regex pattern(R"(^\s*#\s*include\s*(["<])([^">]+)[">])");
  std::vector<Include> includes;
  std::istringstream lines(file.text);
  std::string line;
  for (int number = 1; std::getline(lines, line); ++number) {
    std::smatch match;
    if (std::regex_search(line, match, pattern)) includes.push_back({match[2], match[1] == "\"", number});
  }
  return includes;
}

}  // namespace orvanel::structure
