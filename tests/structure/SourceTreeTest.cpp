// Customs of the source tree that no compiler looks after.
#include <gtest/gtest.h>

#include <string>

#include "structure/SourceTree.h"

namespace orvanel::structure {
namespace {

TEST(SourceTree, everyHeaderSaysWhatItIsAndGuardsItself) {
  const auto files = sourceFiles("src");
  ASSERT_FALSE(files.empty());
  for (const SourceFile& file : files) {
    if (!file.isHeader()) continue;
    EXPECT_TRUE(file.text.starts_with("// ")) << file.path << " opens without saying what it is";
    // A header compiled once for each instruction set guards itself for each of them.
    const bool isGuarded = file.text.find("\n#pragma once\n") != std::string::npos ||
                           file.text.find("HWY_TARGET_TOGGLE") != std::string::npos;
    EXPECT_TRUE(isGuarded) << file.path << " lacks #pragma once";
  }
}

TEST(SourceTree, everySourceIsBuilt) {
  for (const std::string top : {"src", "tests", "bench", "fuzz"}) {
    for (const SourceFile& file : sourceFiles(top)) {
      if (file.isHeader()) continue;
      // The nearest list above the file names it.
      const auto path = std::filesystem::path(file.path);
      auto folder = path.parent_path();
      while (folder != top && !std::filesystem::exists(projectFolder() / folder / "CMakeLists.txt")) {
        folder = folder.parent_path();
      }
      const auto list = readText(projectFolder() / folder / "CMakeLists.txt");
      auto name = path.lexically_relative(folder).generic_string();
      if (top == "fuzz") name = path.stem().string().substr(std::string("fuzz_").size());
      EXPECT_TRUE(list.find(name) != std::string::npos)
          << file.path << " is not named in " << folder.generic_string() << "/CMakeLists.txt";
    }
  }
}

}  // namespace
}  // namespace orvanel::structure
