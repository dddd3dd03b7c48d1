#include <gmock/gmock.h>

#include <QDir>
#include <QFile>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include "cli/ProgramRun.h"

namespace orvanel {
namespace {

using test::Outcome;
using test::runProgram;
using testing::HasSubstr;
using testing::StartsWith;

class RunCommandTest : public testing::Test {
 protected:
  [[nodiscard]] QString path(const char* name) const { return folder.filePath(QString::fromUtf8(name)); }

  /// Runs JSON steps on a new document.
  [[nodiscard]] static Outcome run(const char* script, const QString& output = {},
                                   const char* input = "new:60x40:2") {
    QStringList arguments{QStringLiteral("run"), QStringLiteral("-"), QString::fromUtf8(input)};
    if (!output.isEmpty()) arguments << output;
    return runProgram(arguments, {.standardInput = script, .outputFile = {}});
  }

  /// The output of each `state` step of a script.
  [[nodiscard]] static std::vector<QJsonObject> states(const Outcome& outcome) {
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_EQ(outcome.errors, "");
    std::vector<QJsonObject> result;
    for (const QByteArray& line : outcome.output.split('\n')) {
      if (!line.isEmpty()) result.push_back(QJsonDocument::fromJson(line).object());
    }
    return result;
  }
  /// The output of the last `state` step.
  [[nodiscard]] static QJsonObject state(const char* script, const char* input = "new:60x40:2") {
    const std::vector<QJsonObject> all = states(run(script, {}, input));
    EXPECT_FALSE(all.empty());
    return all.empty() ? QJsonObject() : all.back();
  }

  static void expectStepFailure(const char* script, const char* reason) {
    const Outcome outcome = run(script);
    EXPECT_EQ(outcome.status, 1) << script;
    EXPECT_THAT(outcome.errors, StartsWith(std::string("-: step 1: "))) << script;
    EXPECT_THAT(outcome.errors, HasSubstr(reason)) << script;
    EXPECT_EQ(std::count(outcome.errors.begin(), outcome.errors.end(), '\n'), 1) << outcome.errors;
  }

  QTemporaryDir folder;
};

TEST_F(RunCommandTest, StateDescribesANewDocumentCompletely) {
  const QJsonObject facts = state(R"([{"do": "state"}])");
  EXPECT_EQ(facts["canvasWidth"], 60);
  EXPECT_EQ(facts["canvasHeight"], 40);
  EXPECT_EQ(facts["colorMode"], 2);
  EXPECT_EQ(facts["hasSelection"], false);
  EXPECT_EQ(facts["isFullSelection"], false);
  EXPECT_TRUE(facts["selectionBounds"].isNull());
  EXPECT_TRUE(facts["undoActionName"].isNull());
  EXPECT_TRUE(facts["redoActionName"].isNull());
  EXPECT_EQ(facts["operations"], 0);
  EXPECT_EQ(facts["currentIndex"], -1);
  EXPECT_EQ(facts["totalMemoryCost"], 0);
  EXPECT_EQ(facts["isDirty"], false);
  const QJsonObject layer = facts["nodes"].toArray()[0].toObject();
  EXPECT_EQ(layer["name"], QStringLiteral("Background"));
  EXPECT_EQ(layer["contentBounds"], QJsonArray({0, 0, 60, 40}));
  EXPECT_EQ(facts["selectedNodeID"], layer["id"]);
}

TEST_F(RunCommandTest, StepsLeaveOneRecordEach) {
  const QJsonObject facts = state(R"([
    {"do": "addLayer", "name": "Spot"}, {"do": "rectangle", "x": 10, "y": 5, "width": 20, "height": 10},
    {"do": "fill", "color": [1, 0, 0, 1]}, {"do": "deselect"}, {"do": "undo"}, {"do": "state"}])");
  EXPECT_EQ(facts["operations"], 4);
  EXPECT_EQ(facts["currentIndex"], 2);
  EXPECT_EQ(facts["undoActionName"], QStringLiteral("Fill"));
  EXPECT_EQ(facts["redoActionName"], QStringLiteral("Deselect"));
  EXPECT_EQ(facts["selectionBounds"], QJsonArray({10, 5, 20, 10}));
  EXPECT_EQ(facts["nodes"].toArray()[1].toObject()["contentBounds"], QJsonArray({10, 5, 20, 10}));
}

TEST_F(RunCommandTest, TheResultIsWrittenAtTheEnd) {
  ASSERT_EQ(run(R"([{"do": "fill", "color": [1, 0, 0, 1]}])", path("out.png")).status, 0);
  EXPECT_EQ(QImage(path("out.png")).pixelColor(30, 20), QColor(Qt::red));
  const Outcome failed =
      run(R"([{"do": "fill", "color": [0, 1, 0, 1]}, {"do": "frobnicate"}])", path("out.png"));
  EXPECT_EQ(failed.status, 1);
  EXPECT_EQ(QImage(path("out.png")).pixelColor(30, 20), QColor(Qt::red));
}

TEST_F(RunCommandTest, ASavedStepCanBeReadAgain) {
  const QByteArray script = R"([{"do": "addFolder", "name": "Group"}, {"do": "save", "path": ")" +
                            path("a.tessel").toUtf8() + R"("}, {"do": "state"}, {"do": "clear"}])";
  EXPECT_EQ(state(script.constData())["isDirty"], false);
  const QJsonObject read = state(R"([{"do": "state"}])", path("a.tessel").toUtf8().constData());
  EXPECT_EQ(read["nodes"].toArray()[1].toObject()["type"], QStringLiteral("folder"));
  const QByteArray nowhere = R"([{"do": "save", "path": "/nonexistent/a.tessel"}])";
  expectStepFailure(nowhere.constData(), "/nonexistent/a.tessel");
}

TEST_F(RunCommandTest, NodesAreNamedByIdOrName) {
  const QJsonObject facts = state(R"([
    {"do": "addFolder", "name": "Group"}, {"do": "addLayer", "name": "Leaf"},
    {"do": "select", "node": "Background"}, {"do": "moveNode", "node": "Background", "into": "Group"},
    {"do": "moveNode", "node": "Leaf", "parent": null, "index": 0},
    {"do": "set", "name": "Ground", "opacity": 0.5, "blendMode": 3, "isVisible": false, "isLocked": true},
    {"do": "state"}])");
  const QJsonArray nodes = facts["nodes"].toArray();
  ASSERT_EQ(nodes.size(), 2);
  EXPECT_EQ(nodes[0].toObject()["name"], QStringLiteral("Leaf"));
  const QJsonObject ground = nodes[1].toObject()["children"].toArray()[0].toObject();
  EXPECT_EQ(ground["name"], QStringLiteral("Ground"));
  EXPECT_EQ(ground["opacity"], 0.5);
  EXPECT_EQ(ground["blendMode"], 3);
  EXPECT_EQ(ground["isVisible"], false);
  EXPECT_EQ(ground["isLocked"], true);
  EXPECT_EQ(facts["operations"], 9);
}

TEST_F(RunCommandTest, MasksAreAddedFilledAppliedAndRemoved) {
  const std::vector<QJsonObject> all = states(run(R"([
    {"do": "ellipse", "cx": 20, "cy": 20, "rx": 10, "ry": 8}, {"do": "addMask"}, {"do": "deselect"},
    {"do": "editMask", "on": true}, {"do": "set", "maskEnabled": false}, {"do": "state"},
    {"do": "applyMask"}, {"do": "state"}, {"do": "addMask"}, {"do": "removeMask"}, {"do": "state"}])"));
  ASSERT_EQ(all.size(), 3U);
  EXPECT_EQ(all[0]["nodes"].toArray()[0].toObject()["mask"].toObject()["isEnabled"], false);
  EXPECT_EQ(all[0]["operations"], 3);
  const QJsonObject applied = all[1]["nodes"].toArray()[0].toObject();
  EXPECT_FALSE(applied.contains("mask"));
  EXPECT_EQ(applied["contentBounds"], QJsonArray({10, 12, 20, 16}));
  EXPECT_EQ(all[2]["undoActionName"], QStringLiteral("Remove Layer Mask"));
}

TEST_F(RunCommandTest, BlackAndWhitePointsMayCoincideAtEitherEnd) {
  const auto grayAfter = [&](const char* levels) {
    const QByteArray script =
        R"([{"do": "fill", "color": [0.5, 0.5, 0.5, 1]}, {"do": "levels", "gamma": 1, )" +
        QByteArray(levels) + "}]";
    EXPECT_EQ(run(script.constData(), path("out.png")).status, 0) << levels;
    return QImage(path("out.png")).pixelColor(1, 1).red();
  };
  EXPECT_EQ(grayAfter(R"("black": 255, "white": 255)"), 0);
  EXPECT_EQ(grayAfter(R"("black": 255, "white": 0)"), 0);
  EXPECT_EQ(grayAfter(R"("black": 0, "white": 0)"), 255);
  EXPECT_EQ(grayAfter(R"("black": 0, "white": 255)"), 128);
}

TEST_F(RunCommandTest, EditingTheMaskEditsThePixelsWhileThereIsNoMask) {
  const QByteArray script = R"([
    {"do": "editMask", "on": true}, {"do": "fill", "color": [1, 0, 0, 1]}, {"do": "save", "path": ")" +
                            path("before.png").toUtf8() + R"("},
    {"do": "addMask"}, {"do": "fill", "color": [0, 0, 0, 1]}])";
  ASSERT_EQ(run(script.constData(), path("after.png")).status, 0);
  EXPECT_EQ(QImage(path("before.png")).pixelColor(5, 5), QColor(Qt::red));
  EXPECT_EQ(QImage(path("after.png")).pixelColor(5, 5).alpha(), 0);
}

TEST_F(RunCommandTest, PixelsAreCopiedThroughTheClipboard) {
  const QJsonObject facts = state(R"([
    {"do": "paste"}, {"do": "rectangle", "x": 3, "y": 4, "width": 5, "height": 6}, {"do": "cut"},
    {"do": "paste"}, {"do": "move", "dx": 10, "dy": -2}, {"do": "state"}])");
  const QJsonArray nodes = facts["nodes"].toArray();
  ASSERT_EQ(nodes.size(), 2);
  EXPECT_EQ(nodes[1].toObject()["name"], QStringLiteral("Pasted Layer"));
  EXPECT_EQ(nodes[1].toObject()["contentBounds"], QJsonArray({13, 2, 5, 6}));
  EXPECT_EQ(facts["undoActionName"], QStringLiteral("Move"));
}

TEST_F(RunCommandTest, TransformsAreRecordedUnderTheToolsNames) {
  const std::vector<QJsonObject> all = states(run(R"([
    {"do": "addLayer", "name": "A"}, {"do": "rectangle", "x": 20, "y": 10, "width": 12, "height": 8},
    {"do": "fill", "color": [0, 0, 1, 1]}, {"do": "deselect"},
    {"do": "scale", "to": [10, 10, 24, 16]}, {"do": "state"},
    {"do": "rotate", "angle": 3.14159265358979}, {"do": "state"},
    {"do": "transform", "matrix": [1, 0, 0, 1, 5, 6]}, {"do": "state"}])"));
  ASSERT_EQ(all.size(), 3U);
  EXPECT_EQ(all[0]["undoActionName"], QStringLiteral("Scale"));
  EXPECT_EQ(all[0]["nodes"].toArray()[1].toObject()["contentBounds"], QJsonArray({10, 10, 24, 16}));
  EXPECT_EQ(all[1]["undoActionName"], QStringLiteral("Rotate"));
  EXPECT_EQ(all[2]["undoActionName"], QStringLiteral("Free Transform"));
}

TEST_F(RunCommandTest, TheCanvasChangesItsSizeAndMode) {
  const std::vector<QJsonObject> all = states(run(R"([
    {"do": "imageSize", "width": 30, "height": 20, "method": 1}, {"do": "state"},
    {"do": "canvasSize", "width": 50, "height": 21, "anchorX": 1, "anchorY": -1}, {"do": "state"},
    {"do": "trim"}, {"do": "state"}, {"do": "rectangle", "x": 1, "y": 2, "width": 10, "height": 5},
    {"do": "crop"}, {"do": "state"}, {"do": "colorMode", "mode": 1}, {"do": "state"},
    {"do": "undo", "count": 6}, {"do": "state"}])"));
  ASSERT_EQ(all.size(), 6U);
  EXPECT_EQ(all[0]["canvasWidth"], 30);
  EXPECT_EQ(all[0]["undoActionName"], QStringLiteral("Canvas Size"));
  EXPECT_EQ(all[1]["nodes"].toArray()[0].toObject()["contentBounds"], QJsonArray({20, 0, 30, 20}));
  EXPECT_EQ(all[2]["undoActionName"], QStringLiteral("Trim"));
  EXPECT_EQ(all[2]["canvasHeight"], 20);
  EXPECT_EQ(all[3]["canvasWidth"], 10);
  EXPECT_EQ(all[3]["canvasHeight"], 5);
  EXPECT_EQ(all[3]["hasSelection"], false);
  EXPECT_EQ(all[4]["colorMode"], 1);
  EXPECT_EQ(all[5]["canvasWidth"], 60);
  EXPECT_EQ(all[5]["colorMode"], 2);
}

TEST_F(RunCommandTest, SelectionsOfEveryKind) {
  const std::vector<QJsonObject> all = states(run(R"([
    {"do": "selectAll"}, {"do": "state"}, {"do": "invertSelection"}, {"do": "state"},
    {"do": "polygon", "points": [[0, 0], [20, 0], [20, 10], [0, 10]]}, {"do": "state"},
    {"do": "rectangle", "x": 10, "y": 0, "width": 20, "height": 10, "mode": "intersect"}, {"do": "state"},
    {"do": "wand", "x": 3, "y": 3, "tolerance": 0, "antialiased": false, "mode": "add"}, {"do": "state"},
    {"do": "selectTransparency"}, {"do": "state"}, {"do": "selectChannel", "index": 3}, {"do": "state"},
    {"do": "addMask"}, {"do": "selectMask"}, {"do": "state"}])"));
  ASSERT_EQ(all.size(), 8U);
  EXPECT_EQ(all[0]["isFullSelection"], true);
  EXPECT_EQ(all[1]["hasSelection"], false);
  EXPECT_EQ(all[2]["selectionBounds"], QJsonArray({0, 0, 20, 10}));
  EXPECT_EQ(all[2]["isDirty"], false);
  EXPECT_EQ(all[3]["selectionBounds"], QJsonArray({10, 0, 10, 10}));
  EXPECT_EQ(all[4]["selectionBounds"], QJsonArray({0, 0, 60, 40}));
  EXPECT_EQ(all[5]["undoActionName"], QStringLiteral("Select Layer Transparency"));
  EXPECT_EQ(all[6]["undoActionName"], QStringLiteral("Select Channel"));
  EXPECT_EQ(all[7]["undoActionName"], QStringLiteral("Select Mask"));
}

TEST_F(RunCommandTest, InapplicableStepsAreIgnored) {
  const QJsonObject facts = state(R"([
    {"do": "deselect"}, {"do": "copy"}, {"do": "paste"}, {"do": "crop"}, {"do": "trim"}, {"do": "applyMask"},
    {"do": "removeNode"}, {"do": "colorMode", "mode": 2}, {"do": "wand", "x": -5, "y": 900},
    {"do": "polygon", "points": []}, {"do": "polygon", "points": [[1, 1], [5, 5], [9, 9]]},
    {"do": "rectangle", "x": 5, "y": 5, "width": 0, "height": 9},
    {"do": "ellipse", "cx": -90, "cy": 5, "rx": 9, "ry": 9}, {"do": "state"}])");
  EXPECT_EQ(facts["operations"], 0);
  EXPECT_EQ(facts["isDirty"], false);
}

TEST_F(RunCommandTest, AShapeWithoutAreaLeavesTheSelectionAndNoRecord) {
  const QJsonObject facts = state(R"([
    {"do": "selectAll"}, {"do": "polygon", "points": []}, {"do": "polygon", "points": [[1, 1], [5, 5], [9, 9]]},
    {"do": "rectangle", "x": 5, "y": 5, "width": 0, "height": 9},
    {"do": "ellipse", "cx": -90, "cy": 5, "rx": 9, "ry": 9, "mode": "intersect"}, {"do": "state"}])");
  EXPECT_EQ(facts["operations"], 1);
  EXPECT_EQ(facts["isFullSelection"], true);
}

TEST_F(RunCommandTest, AMalformedStepIsReportedByItsNumber) {
  const Outcome outcome = run(R"([{"do": "clear"}, {"do": "state"}, {"do": "fill"}])");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.errors, "-: step 3: \"color\" is missing\n");
  expectStepFailure(R"([{"do": "frobnicate"}])", "unknown command \"frobnicate\"");
  expectStepFailure(R"([{"do": "clear", "color": 3}])", "unknown argument \"color\"");
  expectStepFailure(R"([{"do": "fill", "color": [1, 0, 0]}])", "\"color\"");
  expectStepFailure(R"([{"do": "fill", "color": [1, 0, 0, 1.5]}])", "\"color\"");
  expectStepFailure(R"([{"do": "fill", "color": [1, 0, "0", 1]}])", "\"color\"");
  expectStepFailure(R"([{"do": "select", "node": "Nobody"}])", "unknown node \"Nobody\"");
  expectStepFailure(R"([{"do": "select", "node": 3}])", "\"node\" must be a string");
  expectStepFailure(R"([{"do": "editMask", "on": 1}])", "\"on\" must be true or false");
  expectStepFailure(R"([{"do": "move", "dx": 1.5, "dy": 0}])", "\"dx\" must be a whole number");
  expectStepFailure(R"([{"do": "move", "dx": 1e99, "dy": 0}])", "\"dx\" must lie between");
  expectStepFailure(R"([{"do": "imageSize", "width": 0, "height": 3, "method": 0}])", "\"width\"");
  expectStepFailure(R"([{"do": "imageSize", "width": 16385, "height": 3, "method": 0}])", "\"width\"");
  expectStepFailure(R"([{"do": "canvasSize", "width": 5, "height": 5, "anchorX": 2, "anchorY": 0}])",
                    "\"anchorX\"");
  expectStepFailure(R"([{"do": "set", "opacity": 1.01}])", "\"opacity\"");
  expectStepFailure(R"([{"do": "set", "blendMode": 8}])", "\"blendMode\"");
  expectStepFailure(R"([{"do": "rectangle", "x": 0, "y": 0, "width": 5, "height": 5, "mode": "xor"}])",
                    "\"mode\"");
  expectStepFailure(R"([{"do": "rectangle", "x": 0, "y": 0, "width": 5, "height": 5, "feather": -1}])",
                    "\"feather\"");
  expectStepFailure(R"([{"do": "ellipse", "cx": 0, "cy": 0, "rx": -1, "ry": 5}])", "\"rx\"");
  expectStepFailure(R"([{"do": "polygon", "points": [[1, 2, 3]]}])", "\"points\"");
  expectStepFailure(R"([{"do": "wand", "x": 1, "y": 1, "tolerance": 256}])", "\"tolerance\"");
  expectStepFailure(R"([{"do": "polygon", "points": [[0, 0], [1000001, 0], [5, 5]]}])",
                    "\"points\" must lie between");
  expectStepFailure(R"([{"do": "polygon", "points": [[0, 0], [5, 0], [5, -1e7]]}])",
                    "\"points\" must lie between");
  expectStepFailure(R"([{"do": "levels", "black": 255.5, "white": 255, "gamma": 1}])", "\"black\"");
  expectStepFailure(R"([{"do": "levels", "black": -1, "white": 255, "gamma": 1}])", "\"black\"");
  expectStepFailure(R"([{"do": "levels", "black": 0, "white": 256, "gamma": 1}])", "\"white\"");
  expectStepFailure(R"([{"do": "levels", "black": 0, "white": -0.5, "gamma": 1}])", "\"white\"");
  expectStepFailure(R"([{"do": "scale", "to": [0, 0, 0.5, 10]}])", "\"to\"");
  expectStepFailure(R"([{"do": "transform", "matrix": [1, 1, 1, 1, 0, 0]}])", "\"matrix\" can't be inverted");
  expectStepFailure(R"([{"do": "moveNode", "node": "Background", "into": "Background"}])",
                    "must be a folder");
  expectStepFailure(R"([{"do": "undo", "count": 0}])", "\"count\"");
}

TEST_F(RunCommandTest, AFolderDoesNotMoveIntoItself) {
  const Outcome outcome = run(R"([{"do": "addFolder", "name": "A"}, {"do": "addFolder", "name": "B"},
                                  {"do": "moveNode", "node": "A", "into": "B"}])");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.errors, "-: step 3: a folder can't be moved into itself\n");
}

TEST_F(RunCommandTest, AnInvalidScriptIsRefusedBeforeAnythingRuns) {
  for (const char* script :
       {"", "{", "{}", "3", "[3]", "[{}]", R"([{"do": 3}])", R"([{"do": "state"}, []])"}) {
    const Outcome outcome = run(script);
    EXPECT_EQ(outcome.status, 1) << script;
    EXPECT_THAT(outcome.errors, StartsWith("-: ")) << script;
    EXPECT_EQ(outcome.output, QByteArray()) << script;
  }
  const Outcome missing = runProgram({QStringLiteral("run"), path("no.json"), QStringLiteral("new:3x3:0")});
  EXPECT_EQ(missing.status, 1);
  EXPECT_THAT(missing.errors, StartsWith(path("no.json").toStdString() + ": "));
}

TEST_F(RunCommandTest, AStepWithADuplicateKeyIsRefused) {
  const auto reason = [](const char* script) { return run(script).errors; };
  EXPECT_EQ(reason(R"([{"do": "clear", "do": "invert"}])"), "-: step 1: \"do\" is given twice\n");
  EXPECT_EQ(reason(R"([{"do": "state"}, {"do": "move", "dx": 1, "dy": 0, "d\u0078": 1}])"),
            "-: step 2: \"dx\" is given twice\n");
  EXPECT_EQ(run("\xEF\xBB\xBF[{\"do\": \"clear\"}, {\"do\": \"clear\"}]").status, 0);
  EXPECT_EQ(reason("\xEF\xBB\xBF[{\"do\": \"clear\", \"do\": \"clear\"}]"),
            "-: step 1: \"do\" is given twice\n");
}

TEST_F(RunCommandTest, ANewDocumentNeedsAValidSizeAndMode) {
  for (const char* input : {"new:0x5:2", "new:5x0:2", "new:16385x5:2", "new:5x5:4", "new:5x5", "new:-5x5:2",
                            "new:5x5:2x", "new:99999999999x5:2"}) {
    const Outcome outcome = run("[]", {}, input);
    EXPECT_EQ(outcome.status, 1) << input;
    EXPECT_THAT(outcome.errors, StartsWith(std::string(input) + ": "));
  }
  EXPECT_EQ(state(R"([{"do": "state"}])", "new:16384x1:3")["canvasWidth"], 16384);
}

TEST_F(RunCommandTest, StepTimesAreWrittenToStandardError) {
  const Outcome outcome = runProgram(
      {QStringLiteral("run"), QStringLiteral("--time"), QStringLiteral("-"), QStringLiteral("new:5x5:2")},
      {.standardInput = R"([{"do": "clear"}, {"do": "undo"}])", .outputFile = {}});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.output, QByteArray());
  EXPECT_THAT(outcome.errors, testing::MatchesRegex("step 1 clear: [0-9.]+ ms\nstep 2 undo: [0-9.]+ ms\n"));
}

TEST_F(RunCommandTest, ArgumentsAfterTwoDashesAreFiles) {
  QFile script(path("--time"));
  ASSERT_TRUE(script.open(QIODevice::WriteOnly));
  script.write("[]");
  script.close();
  const QString before = QDir::currentPath();
  ASSERT_TRUE(QDir::setCurrent(folder.path()));
  const Outcome outcome = runProgram({QStringLiteral("run"), QStringLiteral("--"), QStringLiteral("--time"),
                                      QStringLiteral("new:5x5:2"), QStringLiteral("out.png")});
  QDir::setCurrent(before);
  EXPECT_EQ(outcome.status, 0) << outcome.errors;
  EXPECT_TRUE(QFile::exists(path("out.png")));
}

TEST_F(RunCommandTest, AnUnknownOutputExtensionIsRefusedBeforeTheScriptIsRead) {
  const Outcome outcome = run("no script", path("out.xyz"));
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.errors, StartsWith(path("out.xyz").toStdString() + ": "));
}

}  // namespace
}  // namespace orvanel
