// Includes run one way through the rooms of src/. This is the plan; ARCHITECTURE.md draws it.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "structure/SourceTree.h"

namespace orvanel::structure {
namespace {

enum class QtAllowed { none, withoutWidgets, all };

/// What the files of one room may include, beside the room's own.
struct Room {
  std::string folder;
  QtAllowed qt;
  std::vector<std::string> mayInclude;
};

const std::vector<Room> plan = {
    {"raster", QtAllowed::none, {}},
    {"undo", QtAllowed::withoutWidgets, {"raster"}},
    {"model", QtAllowed::withoutWidgets, {"raster", "undo"}},
    {"io", QtAllowed::withoutWidgets, {"raster", "undo", "model"}},
    {"recovery", QtAllowed::withoutWidgets, {"raster", "undo", "model", "io"}},
    {"tools", QtAllowed::withoutWidgets, {"raster", "undo", "model"}},
    {"look", QtAllowed::all, {}},
    {"canvas", QtAllowed::all, {"raster", "undo", "model", "io", "tools", "look"}},
    {"panels", QtAllowed::all, {"raster", "undo", "model", "tools", "look"}},
    {"app",
     QtAllowed::all,
     {"raster", "undo", "model", "io", "recovery", "tools", "look", "canvas", "panels"}},
    {"cli", QtAllowed::withoutWidgets, {"raster", "undo", "model", "io", "recovery", "tools"}},
    {"thumbnailer", QtAllowed::withoutWidgets, {"raster", "undo", "model", "io"}},
};

/// Folders that serve their own room alone. What can write to a document is among them, so that everybody
/// else has to go through its commands.
const std::vector<std::string> privateFolders = {"model/edit", "model/records"};

/// The room that a path relative to src/ lies in: the longest folder of the plan that it begins with.
const Room* roomOf(const std::string& path) {
  const Room* found = nullptr;
  for (const Room& room : plan) {
    if (path.starts_with(room.folder + "/") &&
        (found == nullptr || room.folder.size() > found->folder.size())) {
      found = &room;
    }
  }
  return found;
}

bool contains(const std::vector<std::string>& names, const std::string& name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

bool isInQtModule(const std::string& module, const std::string& path) {
  return std::filesystem::exists(std::filesystem::path(ORVANEL_QT_HEADERS) / module / path);
}

bool isWidgetsHeader(const std::string& path) {
  return path.starts_with("QtWidgets") || isInQtModule("QtWidgets", path);
}

bool isQtHeader(const std::string& path) {
  return path.starts_with("Qt") || isInQtModule("QtCore", path) || isInQtModule("QtGui", path) ||
         isInQtModule("QtSvg", path) || isWidgetsHeader(path);
}

/// Says what is wrong with an include, or nothing.
std::string fault(const SourceFile& file, const Include& include) {
  const Room* room = roomOf(file.path.substr(std::string("src/").size()));
  if (room == nullptr) return "the file is in no room of the plan";
  if (isQtHeader(include.path)) {
    if (room->qt == QtAllowed::none) return room->folder + " must not use Qt";
    if (room->qt == QtAllowed::withoutWidgets && isWidgetsHeader(include.path)) {
      return room->folder + " must not use widgets";
    }
    return {};
  }
  if (!include.isQuoted || include.path.ends_with(".moc")) return {};
  const Room* target = roomOf(include.path);
  if (target == nullptr) {
    const bool isLibraryHeader =
        include.path.find('/') != std::string::npos && !include.path.starts_with(".");
    return isLibraryHeader ? "" : "own headers are named from src/ on";
  }
  if (target == room) return {};
  if (!contains(room->mayInclude, target->folder))
    return room->folder + " must not include " + target->folder;
  for (const std::string& folder : privateFolders) {
    if (include.path.starts_with(folder + "/")) return folder + " is private to " + target->folder;
  }
  return {};
}

std::string faultOf(const std::string& path, const std::string& line) {
  const SourceFile file{path, line};
  const auto includes = includesOf(file);
  return includes.size() == 1 ? fault(file, includes.front()) : "not one include";
}

TEST(IncludeDirection, followsThePlanEverywhere) {
  const auto files = sourceFiles("src");
  ASSERT_FALSE(files.empty());
  for (const SourceFile& file : files) {
    for (const Include& include : includesOf(file)) {
      EXPECT_EQ(fault(file, include), "") << file.at(include.line) << " includes " << include.path;
    }
  }
}

TEST(IncludeDirection, planHasNoWayBack) {
  std::set<std::string> below;
  for (const Room& room : plan) {
    for (const std::string& target : room.mayInclude) {
      EXPECT_TRUE(below.contains(target)) << room.folder << " may include " << target << " above it";
    }
    below.insert(room.folder);
  }
}

TEST(IncludeDirection, seesAnArrowAgainstThePlan) {
  EXPECT_EQ(faultOf("src/raster/Surface.cpp", "#include \"raster/Surface.h\""), "");
  EXPECT_EQ(faultOf("src/raster/Surface.h", "#include \"model/Layer.h\""), "raster must not include model");
  EXPECT_EQ(faultOf("src/undo/UndoStack.cpp", "  # include \"model/Layer.h\""),
            "undo must not include model");
  EXPECT_EQ(faultOf("src/model/Document.cpp", "#include \"model/records/X.h\""), "");
  EXPECT_EQ(faultOf("src/tools/MagicWand.cpp", "#include \"model/records/X.h\""),
            "model/records is private to model");
  EXPECT_EQ(faultOf("src/app/MainWindow.cpp", "#include \"model/edit/X.h\""),
            "model/edit is private to model");
  EXPECT_EQ(faultOf("src/model/Document.cpp", "#include \"Document.h\""),
            "own headers are named from src/ on");
  EXPECT_EQ(faultOf("src/io/A.cpp", "#include \"../model/Layer.h\""), "own headers are named from src/ on");
}

TEST(IncludeDirection, seesAFrameworkWhereItMustNotBe) {
  EXPECT_EQ(faultOf("src/raster/Tile.h", "#include <QString>"), "raster must not use Qt");
  EXPECT_EQ(faultOf("src/raster/Tile.h", "#include <QtCore/QString>"), "raster must not use Qt");
  EXPECT_EQ(faultOf("src/raster/Tile.h", "#include <qglobal.h>"), "raster must not use Qt");
  EXPECT_EQ(faultOf("src/raster/Tile.h", "#include <queue>"), "");
  EXPECT_EQ(faultOf("src/model/Layer.h", "#include <QString>"), "");
  EXPECT_EQ(faultOf("src/model/Layer.h", "#include <QWidget>"), "model must not use widgets");
  EXPECT_EQ(faultOf("src/cli/main.cpp", "#include <QtWidgets/QApplication>"), "cli must not use widgets");
  EXPECT_EQ(faultOf("src/app/main.cpp", "#include <QApplication>"), "");
}

}  // namespace
}  // namespace orvanel::structure
