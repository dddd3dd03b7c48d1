#include "app/WindowState.h"

#include <gmock/gmock.h>

#include "app/AppState.h"
#include "tools/PostCounter.h"

namespace orvanel {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class WindowStateTest : public testing::Test {
 protected:
  DocumentPtr add(const QString& name) {
    const DocumentPtr document = Document::create(name, 8, 8, ColorMode::rgb8, MetalContext::shared());
    window.addDocument(document);
    return document;
  }
  void addABC() {
    a = add(QStringLiteral("A"));
    b = add(QStringLiteral("B"));
    c = add(QStringLiteral("C"));
  }
  [[nodiscard]] std::vector<std::string> names() const {
    std::vector<std::string> result;
    for (const DocumentPtr& document : window.documents.value())
      result.push_back(document->name.value().toStdString());
    return result;
  }
  [[nodiscard]] std::vector<std::string> mostRecentNames() const {
    std::vector<std::string> result;
    for (const QUuid& id : window.mruOrder.value())
      result.push_back(window.findDocument(id)->name.value().toStdString());
    return result;
  }
  [[nodiscard]] std::string activeName() const {
    const DocumentPtr active = window.activeDocument();
    return active ? active->name.value().toStdString() : "none";
  }

  AppState state{MetalContext::shared()};
  WindowState& window = state.windowState;
  ToolState& tools = state.toolState;
  DocumentPtr a;
  DocumentPtr b;
  DocumentPtr c;
};

TEST_F(WindowStateTest, StartsWithoutDocuments) {
  EXPECT_THAT(names(), IsEmpty());
  EXPECT_EQ(window.activeDocumentID.value(), std::nullopt);
  EXPECT_THAT(window.mruOrder.value(), IsEmpty());
  EXPECT_EQ(window.activeDocument(), nullptr);
  EXPECT_FALSE(window.id.isNull());
}

TEST_F(WindowStateTest, AnAddedDocumentComesLastAndBecomesActive) {
  addABC();
  EXPECT_THAT(names(), ElementsAre("A", "B", "C"));
  EXPECT_EQ(activeName(), "C");
  EXPECT_THAT(mostRecentNames(), ElementsAre("C", "B", "A"));
  EXPECT_EQ(tools.activeDocument(), c);
}

TEST_F(WindowStateTest, ADocumentThatIsSetAsideStaysOpenAndIsTheMostRecent) {
  addABC();
  window.switchToDocument(b->id);
  window.setAsideActiveDocument();
  EXPECT_EQ(activeName(), "none");
  EXPECT_EQ(tools.activeDocument(), nullptr);
  EXPECT_THAT(names(), ElementsAre("A", "B", "C"));
  EXPECT_THAT(mostRecentNames(), ElementsAre("B", "C", "A"));
}

TEST_F(WindowStateTest, AnUnknownActiveIDMeansNoActiveDocument) {
  addABC();
  window.activeDocumentID = QUuid::createUuid();
  EXPECT_EQ(window.activeDocument(), nullptr);
}

TEST_F(WindowStateTest, AnEqualActiveDocumentDoesNotNotify) {
  addABC();
  int notified = 0;
  const auto notifier = window.activeDocumentID.addNotifier([&] { ++notified; });
  window.switchToDocument(c->id);
  EXPECT_EQ(notified, 0);
  window.switchToDocument(a->id);
  EXPECT_EQ(notified, 1);
}

TEST_F(WindowStateTest, NewDocumentsGetTheFirstFreeName) {
  window.createDocument(QStringLiteral("Untitled"), 4, 4, ColorMode::rgb8);
  add(QStringLiteral("Untitled 3"));
  window.createDocument(QStringLiteral("Untitled"), 4, 4, ColorMode::rgb8);
  window.createDocument(QStringLiteral("Untitled"), 4, 4, ColorMode::rgb8);
  EXPECT_THAT(names(), ElementsAre("Untitled", "Untitled 3", "Untitled 2", "Untitled 4"));
}

TEST_F(WindowStateTest, AnAddedDocumentKeepsItsName) {
  add(QStringLiteral("Untitled"));
  add(QStringLiteral("Untitled"));
  EXPECT_THAT(names(), ElementsAre("Untitled", "Untitled"));
}

TEST_F(WindowStateTest, AnUntitledDocumentCopiesTheActiveOnesSizeAndMode) {
  window.createUntitledDocument();
  DocumentPtr made = window.activeDocument();
  EXPECT_EQ(made->canvasWidth.value(), 1024);
  EXPECT_EQ(made->canvasHeight.value(), 768);
  EXPECT_EQ(made->colorMode.value(), ColorMode::rgb16);

  window.addDocument(
      Document::create(QStringLiteral("Grey"), 640, 480, ColorMode::grayscale8, MetalContext::shared()));
  window.createUntitledDocument();
  made = window.activeDocument();
  EXPECT_EQ(made->name.value(), "Untitled 2");
  EXPECT_EQ(made->canvasWidth.value(), 640);
  EXPECT_EQ(made->canvasHeight.value(), 480);
  EXPECT_EQ(made->colorMode.value(), ColorMode::grayscale8);
}

TEST_F(WindowStateTest, SwitchingMovesTheDocumentToTheFrontOfTheOrder) {
  addABC();
  window.switchToDocument(a->id);
  EXPECT_EQ(activeName(), "A");
  EXPECT_THAT(mostRecentNames(), ElementsAre("A", "C", "B"));
  window.switchToDocument(QUuid::createUuid());
  EXPECT_EQ(activeName(), "A");
  EXPECT_THAT(mostRecentNames(), ElementsAre("A", "C", "B"));
}

TEST_F(WindowStateTest, SwitchingRestoresTheDocumentsTool) {
  addABC();
  tools.selectTool(Tool::zoom);
  window.switchToDocument(a->id);
  EXPECT_EQ(tools.currentTool(), Tool::hand);
  tools.selectTool(Tool::magicWand);
  tools.pushTool(Tool::hand);
  window.switchToDocument(c->id);
  EXPECT_EQ(tools.currentTool(), Tool::zoom);
  window.switchToDocument(a->id);
  EXPECT_EQ(tools.currentTool(), Tool::magicWand);
}

TEST_F(WindowStateTest, ForwardCyclingAlternatesBetweenTheTwoMostRecent) {
  addABC();
  EXPECT_TRUE(window.cycleNextDocument());
  EXPECT_EQ(activeName(), "B");
  EXPECT_EQ(tools.activeDocument(), b);
  EXPECT_THAT(mostRecentNames(), ElementsAre("B", "C", "A"));
  EXPECT_TRUE(window.cycleNextDocument());
  EXPECT_EQ(activeName(), "C");
  EXPECT_EQ(tools.activeDocument(), c);
  EXPECT_THAT(mostRecentNames(), ElementsAre("C", "B", "A"));
}

TEST_F(WindowStateTest, BackwardCyclingWalksThroughAllOldestFirst) {
  addABC();
  std::vector<std::string> visited;
  for (int step = 0; step < 3; ++step) {
    EXPECT_TRUE(window.cyclePreviousDocument());
    visited.push_back(activeName());
  }
  EXPECT_THAT(visited, ElementsAre("A", "B", "C"));
}

TEST_F(WindowStateTest, CyclingRestoresTheDocumentsTool) {
  addABC();
  a->rememberTool(Tool::eyedropper, {});
  b->rememberTool(Tool::zoom, {});
  EXPECT_TRUE(window.cycleNextDocument());
  EXPECT_EQ(tools.currentTool(), Tool::zoom);
  EXPECT_TRUE(window.cyclePreviousDocument());
  EXPECT_EQ(activeName(), "A");
  EXPECT_EQ(tools.currentTool(), Tool::eyedropper);
}

TEST_F(WindowStateTest, CyclingFirstMovesTheActiveDocumentToTheFront) {
  addABC();
  window.activeDocumentID = a->id;
  EXPECT_TRUE(window.cycleNextDocument());
  EXPECT_EQ(activeName(), "C");
  EXPECT_THAT(mostRecentNames(), ElementsAre("C", "A", "B"));
}

TEST_F(WindowStateTest, NothingCyclesWithOneDocument) {
  EXPECT_FALSE(window.cycleNextDocument());
  add(QStringLiteral("Only"));
  tools.pushTool(Tool::zoom);
  EXPECT_FALSE(window.cycleNextDocument());
  EXPECT_FALSE(window.cyclePreviousDocument());
  EXPECT_FALSE(window.cycleNextTab());
  EXPECT_FALSE(window.cyclePreviousTab());
  EXPECT_EQ(activeName(), "Only");
  EXPECT_THAT(mostRecentNames(), ElementsAre("Only"));
  EXPECT_EQ(tools.currentTool(), Tool::zoom) << "a switch would have dropped the temporary tool";
}

TEST_F(WindowStateTest, TabCyclingFollowsTabOrderAroundTheEnds) {
  addABC();
  EXPECT_TRUE(window.cycleNextTab());
  EXPECT_EQ(activeName(), "A");
  EXPECT_THAT(mostRecentNames(), ElementsAre("A", "C", "B"));
  EXPECT_TRUE(window.cyclePreviousTab());
  EXPECT_EQ(activeName(), "C");
  EXPECT_THAT(mostRecentNames(), ElementsAre("C", "A", "B"));
  EXPECT_TRUE(window.cyclePreviousTab());
  EXPECT_EQ(activeName(), "B");
  EXPECT_THAT(mostRecentNames(), ElementsAre("B", "C", "A"));
}

TEST_F(WindowStateTest, TabCyclingNeedsAnActiveDocument) {
  addABC();
  window.activeDocumentID = std::nullopt;
  EXPECT_FALSE(window.cycleNextTab());
  window.activeDocumentID = QUuid::createUuid();
  EXPECT_FALSE(window.cyclePreviousTab());
}

TEST_F(WindowStateTest, PromotingAnUnknownIDInsertsIt) {
  addABC();
  const QUuid unknown = QUuid::createUuid();
  window.promoteToMRUFront(unknown);
  EXPECT_EQ(window.mruOrder.value().front(), unknown);
  EXPECT_EQ(window.mruOrder.value().size(), 4U);
}

// Closing.

TEST_F(WindowStateTest, ClosingTheActiveDocumentActivatesTheOneUsedBefore) {
  addABC();
  window.switchToDocument(a->id);
  b->rememberTool(Tool::zoom, {});
  c->rememberTool(Tool::magicWand, {});
  window.closeDocument(a->id);
  EXPECT_THAT(names(), ElementsAre("B", "C"));
  EXPECT_EQ(activeName(), "C");
  EXPECT_EQ(tools.activeDocument(), c);
  EXPECT_EQ(tools.currentTool(), Tool::magicWand);
}

TEST_F(WindowStateTest, OpenDocumentsPostTheirChanges) {
  addABC();
  const test::PostCounter activeLayer(notification::activeLayerChanged);
  const test::PostCounter steps(notification::undoRedoPerformed);
  for (const DocumentPtr& document : {a, b, c}) {
    document->selectNode(std::nullopt);
    document->undo();
  }
  EXPECT_EQ(activeLayer.count, 3);
  EXPECT_EQ(steps.count, 3);
}

TEST_F(WindowStateTest, AClosedDocumentPostsNothing) {
  addABC();
  window.closeDocument(b->id);
  const test::PostCounter activeLayer(notification::activeLayerChanged);
  const test::PostCounter steps(notification::undoRedoPerformed);
  b->selectNode(std::nullopt);
  b->undo();
  EXPECT_EQ(activeLayer.count, 0);
  EXPECT_EQ(steps.count, 0);
  window.closeAllDocuments();
  a->undo();
  EXPECT_EQ(steps.count, 0);
}

TEST_F(WindowStateTest, ADocumentThatIsAddedAgainPostsOnce) {
  addABC();
  window.closeDocument(b->id);
  window.addDocument(b);
  const test::PostCounter steps(notification::undoRedoPerformed);
  b->undo();
  EXPECT_EQ(steps.count, 1);
}

TEST_F(WindowStateTest, ClosingABackgroundTabLeavesTheRest) {
  addABC();
  tools.pushTool(Tool::zoom);
  window.closeDocument(a->id);
  EXPECT_EQ(activeName(), "C");
  EXPECT_THAT(mostRecentNames(), ElementsAre("C", "B"));
  EXPECT_EQ(tools.currentTool(), Tool::zoom);
}

TEST_F(WindowStateTest, ClosingTheLastDocumentLeavesNone) {
  const DocumentPtr only = add(QStringLiteral("Only"));
  window.closeDocument(only->id);
  EXPECT_EQ(window.activeDocumentID.value(), std::nullopt);
  EXPECT_THAT(window.mruOrder.value(), IsEmpty());
  EXPECT_EQ(tools.activeDocument(), nullptr);
}

TEST_F(WindowStateTest, ClosingAnUnknownDocumentDoesNothing) {
  addABC();
  window.closeDocument(QUuid::createUuid());
  EXPECT_THAT(names(), ElementsAre("A", "B", "C"));
}

TEST_F(WindowStateTest, AClosedDocumentIsReleased) {
  std::weak_ptr<Document> watched = add(QStringLiteral("Only"));
  window.closeDocument(watched.lock()->id);
  EXPECT_TRUE(watched.expired());
}

TEST_F(WindowStateTest, OnlyUnsavedDocumentsAreAskedAbout) {
  addABC();
  std::vector<std::string> asked;
  window.confirmClosing = [&](const DocumentPtr& document) {
    asked.push_back(document->name.value().toStdString());
    return false;
  };
  b->setDirty(true);
  window.closeDocument(a->id);
  window.closeDocument(b->id);
  EXPECT_THAT(asked, ElementsAre("B"));
  EXPECT_THAT(names(), ElementsAre("B", "C"));
}

TEST_F(WindowStateTest, ClosingWaitsForRunningSaves) {
  addABC();
  // The failed save makes the document dirty again.
  window.settleSaves = [this](const Document& closing) {
    EXPECT_EQ(closing.id, a->id);
    a->setDirty(true);
  };
  window.confirmClosing = [](const DocumentPtr&) { return false; };
  window.closeDocument(a->id);
  EXPECT_THAT(names(), ElementsAre("A", "B", "C"));
}

TEST_F(WindowStateTest, TheFirstRefusalKeepsAllDocumentsOpen) {
  addABC();
  for (const DocumentPtr& document : {a, b, c}) document->setDirty(true);
  std::vector<std::string> asked;
  window.confirmClosing = [&](const DocumentPtr& document) {
    asked.push_back(document->name.value().toStdString());
    document->setDirty(document == b);
    return document != b;
  };
  window.closeAllDocuments();
  EXPECT_THAT(asked, ElementsAre("A", "B"));
  EXPECT_THAT(names(), ElementsAre("A", "B", "C"));
  EXPECT_FALSE(a->isDirty.value());
}

TEST_F(WindowStateTest, ClosingAllLeavesNoDocuments) {
  addABC();
  window.closeAllDocuments();
  EXPECT_THAT(names(), IsEmpty());
  EXPECT_THAT(window.mruOrder.value(), IsEmpty());
  EXPECT_EQ(window.activeDocumentID.value(), std::nullopt);
  EXPECT_EQ(tools.activeDocument(), nullptr);
}

TEST_F(WindowStateTest, ADocumentThatOpensWhileClosingAllAsksStaysOpen) {
  addABC();
  a->setDirty(true);
  const DocumentPtr late =
      Document::create(QStringLiteral("Late"), 8, 8, ColorMode::rgb8, MetalContext::shared());
  window.confirmClosing = [&](const DocumentPtr&) {
    window.addDocument(late);
    return true;
  };
  window.closeAllDocuments();
  EXPECT_THAT(names(), ElementsAre("Late"));
  EXPECT_EQ(window.activeDocumentID.value(), late->id);
}

TEST_F(WindowStateTest, ClosingTheOthersActivatesTheKeptOne) {
  addABC();
  a->rememberTool(Tool::eyedropper, {});
  window.closeOtherDocuments(a->id);
  EXPECT_THAT(names(), ElementsAre("A"));
  EXPECT_THAT(mostRecentNames(), ElementsAre("A"));
  EXPECT_EQ(activeName(), "A");
  EXPECT_EQ(tools.activeDocument(), a);
  EXPECT_EQ(tools.currentTool(), Tool::eyedropper);
}

TEST_F(WindowStateTest, ClosingTheOthersOfTheActiveOneKeepsItsTemporaryTool) {
  addABC();
  tools.pushTool(Tool::zoom);
  window.closeOtherDocuments(c->id);
  EXPECT_THAT(names(), ElementsAre("C"));
  EXPECT_EQ(tools.currentTool(), Tool::zoom);
}

TEST_F(WindowStateTest, ARefusalKeepsTheOtherDocumentsOpen) {
  addABC();
  b->setDirty(true);
  c->setDirty(true);
  std::vector<std::string> asked;
  window.confirmClosing = [&](const DocumentPtr& document) {
    asked.push_back(document->name.value().toStdString());
    return document != c;
  };
  window.closeOtherDocuments(a->id);
  EXPECT_THAT(asked, ElementsAre("B", "C"));
  EXPECT_THAT(names(), ElementsAre("A", "B", "C"));
  EXPECT_EQ(activeName(), "C");
}

}  // namespace
}  // namespace orvanel
