// A shown layer panel and a user's hands on it.
#pragma once

#include <gtest/gtest.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QTest>
#include <functional>

#include "model/ModelSupport.h"
#include "panels/layers/LayerNSOutlineView.h"
#include "panels/layers/LayerPanelView.h"

namespace orvanel::test {

class LayerPanelTest : public testing::Test {
 protected:
  using Part = LayerRowPart;

  LayerPanelTest() {
    panel.onDeleteNode = [this](const QUuid& id) { document->removeNode(id); };
    panel.resize(280, 700);
  }

  void showPanel() {
    panel.setDocument(document);
    panel.show();
    panel.activateWindow();
    outline.setFocus();
    QApplication::processEvents();
  }

  static bool waitUntil(const std::function<bool()>& condition) {
    QElapsedTimer timer;
    timer.start();
    while (!condition()) {
      if (timer.elapsed() > 30000) return false;
      QApplication::processEvents(QEventLoop::AllEvents, 20);
    }
    return true;
  }

  [[nodiscard]] QModelIndex at(const QString& name) const {
    return outline.treeModel().indexOf(idOf(*document, name));
  }
  [[nodiscard]] QPoint center(const QString& name, Part part) const {
    QApplication::processEvents();
    return outline.rectOf(at(name), part).center();
  }
  void press(const QPoint& point, Qt::KeyboardModifiers modifiers = {}) {
    QTest::mousePress(outline.viewport(), Qt::LeftButton, modifiers, point);
  }
  void moveTo(const QPoint& point, Qt::MouseButtons held = Qt::LeftButton) {
    QMouseEvent move(QEvent::MouseMove, point, outline.viewport()->mapToGlobal(QPointF(point)), Qt::NoButton,
                     held, Qt::NoModifier);
    QApplication::sendEvent(outline.viewport(), &move);
  }
  void release(const QPoint& point, Qt::KeyboardModifiers modifiers = {}) {
    QTest::mouseRelease(outline.viewport(), Qt::LeftButton, modifiers, point);
  }
  void click(const QString& name, Part part, Qt::KeyboardModifiers modifiers = {}) {
    QTest::mouseClick(outline.viewport(), Qt::LeftButton, modifiers, center(name, part));
  }
  void key(Qt::Key which) { QTest::keyClick(&outline, which); }
  [[nodiscard]] std::size_t records() const { return document->undoStack.operations().size(); }
  [[nodiscard]] LayerNode node(const QString& name) const { return nodeNamed(*document, name); }
  [[nodiscard]] std::shared_ptr<Layer> layer(const QString& name) const { return node(name).layer(); }
  [[nodiscard]] QString selectedName() const {
    const QModelIndexList rows = outline.selectionModel()->selectedRows();
    return rows.size() == 1 ? rows.front().data().toString() : QString();
  }

  DocumentPtr document = makeDocument();
  LayerPanelView panel;
  LayerNSOutlineView& outline = panel.outline();
};

}  // namespace orvanel::test
