#include <QDragEnterEvent>
#include <QScrollBar>

#include "look/Look.h"
#include "panels/layers/LayerPanelSupport.h"

namespace orvanel {
namespace {

using namespace test;

class LayerOutlineDroppingTest : public LayerPanelTest {
 protected:
  void SetUp() override {
    for (const char* name : {"a", "b", "c"}) document->addLayer(name);
    outline.runDrag = [this](QDrag& drag) {
      dragged = drag.mimeData();
      draggedPicture = drag.pixmap().toImage();
    };
    showPanel();
  }

  /// Presses the row and moves far enough for a drag.
  void pick(const QString& name, Part part = Part::name) {
    dragged = nullptr;
    const QPoint point = center(name, part);
    press(point);
    dragFrom(point);
    release(point);
    ASSERT_NE(dragged, nullptr);
    QDragEnterEvent enter(point, Qt::MoveAction, dragged, Qt::LeftButton, {});
    QApplication::sendEvent(outline.viewport(), &enter);
    EXPECT_TRUE(enter.isAccepted());
  }
  void dragFrom(const QPoint& point, Qt::MouseButtons held = Qt::LeftButton) {
    for (int step = 1; step <= 3; ++step) {
      moveTo(point + QPoint(0, step * QApplication::startDragDistance()), held);
    }
  }
  bool dragOver(const QPoint& point) {
    QDragMoveEvent move(point, Qt::MoveAction, dragged, Qt::LeftButton, {});
    QApplication::sendEvent(outline.viewport(), &move);
    return move.isAccepted();
  }
  bool dropAt(const QPoint& point) {
    if (!dragOver(point)) {
      QDragLeaveEvent leave;
      QApplication::sendEvent(outline.viewport(), &leave);
      return false;
    }
    QDropEvent drop(point, Qt::MoveAction, dragged, Qt::LeftButton, {});
    QApplication::sendEvent(outline.viewport(), &drop);
    QApplication::processEvents();
    return drop.isAccepted();
  }
  [[nodiscard]] QPoint above(const QString& name) const { return inRow(name, 0.1); }
  [[nodiscard]] QPoint on(const QString& name) const { return inRow(name, 0.5); }
  [[nodiscard]] QPoint below(const QString& name) const { return inRow(name, 0.9); }
  [[nodiscard]] QPoint inRow(const QString& name, double height) const {
    QApplication::processEvents();
    const QRect row = outline.visualRect(at(name));
    return {row.center().x(), row.top() + static_cast<int>(height * row.height())};
  }
  [[nodiscard]] QImage picture() const { return outline.viewport()->grab().toImage(); }

  const QMimeData* dragged = nullptr;
  QImage draggedPicture;
};

TEST_F(LayerOutlineDroppingTest, ARowIsDraggedBetweenOthers) {
  ASSERT_EQ(treeText(*document), "Background, a, b, c");
  document->setDirty(false);
  pick("c");
  EXPECT_TRUE(dropAt(above("Background")));
  EXPECT_EQ(treeText(*document), "Background, c, a, b");
  EXPECT_EQ(activeName(*document), "c");
  EXPECT_TRUE(document->isDirty.value());
  EXPECT_EQ(document->undoStack.undoActionName(), "Move Layer");
  pick("Background", Part::thumbnail);
  EXPECT_TRUE(dropAt(above("b")));
  EXPECT_EQ(treeText(*document), "c, a, b, Background");
  document->undo();
  EXPECT_EQ(treeText(*document), "Background, c, a, b");
}

TEST_F(LayerOutlineDroppingTest, ADropLandsInTheGapThatIsShown) {
  pick("c");
  dropAt(below("b"));
  EXPECT_EQ(treeText(*document), "Background, a, c, b");
  pick("Background");
  dropAt(below("c"));
  EXPECT_EQ(treeText(*document), "a, Background, c, b");
  pick("b");
  dropAt({100, outline.viewport()->height() - 2});
  EXPECT_EQ(treeText(*document), "b, a, Background, c") << "below the last row";
}

TEST_F(LayerOutlineDroppingTest, ADropWhereTheRowIsChangesNothing) {
  const std::size_t before = records();
  pick("b");
  dropAt(above("b"));
  pick("b");
  dropAt(below("b"));
  EXPECT_EQ(treeText(*document), "Background, a, b, c");
  EXPECT_EQ(records(), before);
}

TEST_F(LayerOutlineDroppingTest, AFolderTakesWhatIsDroppedOnIt) {
  document->addFolder("F");
  document->addLayer("inner");
  pick("a");
  EXPECT_TRUE(dropAt(on("F")));
  EXPECT_EQ(treeText(*document), "Background, b, c, F[inner, a]");
  pick("b");
  EXPECT_TRUE(dropAt(below("F"))) << "above its first row";
  EXPECT_EQ(treeText(*document), "Background, c, F[inner, a, b]");
}

TEST_F(LayerOutlineDroppingTest, BelowTheLastRowOfAFolderTheLevelIsChosenSideways) {
  document->addFolder("F");
  document->addLayer("inner");
  pick("a");
  dropAt(below("inner"));
  EXPECT_EQ(treeText(*document), "Background, b, c, F[a, inner]");
  pick("b");
  dropAt({5, below("a").y()});
  EXPECT_EQ(treeText(*document), "Background, c, b, F[a, inner]");
}

TEST_F(LayerOutlineDroppingTest, AFolderIsRefusedByItsOwnContents) {
  document->addFolder("F");
  document->addFolder("Inner");
  document->addLayer("x");
  pick("F");
  EXPECT_FALSE(dropAt(on("F")));
  EXPECT_FALSE(dropAt(on("Inner")));
  EXPECT_FALSE(dropAt(above("x")));
  EXPECT_EQ(treeText(*document), "Background, a, b, c, F[Inner[x]]");
}

TEST_F(LayerOutlineDroppingTest, ForeignDragsAreNotTaken) {
  QMimeData text;
  text.setText("a");
  QDragEnterEvent enter({50, 50}, Qt::MoveAction, &text, Qt::LeftButton, {});
  QApplication::sendEvent(outline.viewport(), &enter);
  EXPECT_FALSE(enter.isAccepted());
}

TEST_F(LayerOutlineDroppingTest, ALineShowsWhereTheDropGoes) {
  pick("c");
  const QImage before = picture();
  dragOver(above("a"));
  const QImage during = picture();
  EXPECT_NE(during, before);
  dragOver(above("Background"));
  EXPECT_NE(picture(), during);
  QDragLeaveEvent leave;
  QApplication::sendEvent(outline.viewport(), &leave);
  EXPECT_EQ(picture(), before);
}

TEST_F(LayerOutlineDroppingTest, AClosedFolderOpensUnderARestingDrag) {
  document->addFolder("F");
  document->addLayer("inner");
  document->setExpanded(idOf(*document, "F"), false);
  outline.springDelay = std::chrono::milliseconds(1);
  pick("a");
  EXPECT_TRUE(dragOver(on("F")));
  EXPECT_TRUE(waitUntil([this] { return node("F").folder()->isExpanded.value(); }));
  EXPECT_TRUE(outline.isExpanded(at("F")));
}

TEST_F(LayerOutlineDroppingTest, ADragNearTheEdgeScrolls) {
  for (int i = 0; i < 30; ++i) document->addLayer("more");
  QApplication::processEvents();
  outline.verticalScrollBar()->setValue(0);
  // Scrolling looks at where the pointer really is.
  const QPoint edge(100, outline.viewport()->height() - 2);
  QCursor::setPos(outline.viewport()->mapToGlobal(edge));
  QApplication::processEvents();
  pick("more 30");
  dragOver(edge);
  EXPECT_TRUE(waitUntil([this] { return outline.verticalScrollBar()->value() > 0; }));
}

TEST_F(LayerOutlineDroppingTest, OnlyTheLeftButtonDrags) {
  click("a", Part::name);
  const QPoint point = center("b", Part::name);
  for (const Qt::MouseButton button : {Qt::RightButton, Qt::MiddleButton, Qt::BackButton}) {
    QTest::mousePress(outline.viewport(), button, {}, point);
    dragFrom(point, button);
    QTest::mouseRelease(outline.viewport(), button, {}, point);
    EXPECT_EQ(dragged, nullptr) << button;
  }
  pick("b");
}

TEST_F(LayerOutlineDroppingTest, AThumbnailThatLoadsTheSelectionIsNotDragged) {
  click("a", Part::name);
  const QPoint point = center("b", Part::thumbnail);
  press(point, Qt::ControlModifier);
  EXPECT_EQ(selectedName(), "b");
  EXPECT_EQ(activeName(*document), "b");
  dragFrom(point);
  release(point, Qt::ControlModifier);
  EXPECT_EQ(dragged, nullptr);
  pick("b", Part::thumbnail);
}

TEST_F(LayerOutlineDroppingTest, TheDraggedRowIsTranslucent) {
  pick("b");
  ASSERT_TRUE(draggedPicture.hasAlphaChannel());
  for (const QPoint& point : {QPoint(2, 2), draggedPicture.rect().center()}) {
    EXPECT_EQ(draggedPicture.pixelColor(point).alpha(), look::color::draggedRow.alpha());
  }
}

}  // namespace
}  // namespace orvanel
