// The bar at the top of the window with the current tool and its settings. Owned by the window, which sets
// the active document; without one there is nothing to set. Main thread only.
#pragma once

#include <QPropertyNotifier>
#include <QWidget>

#include "model/Document.h"
#include "tools/ToolState.h"

class QLabel;
class QStackedWidget;

namespace orvanel {

class OptionsRow;

class ToolOptionsPane : public QWidget {
  Q_OBJECT

 public:
  /// `toolState` must outlive the pane.
  explicit ToolOptionsPane(ToolState& toolState, QWidget* parent = nullptr);

  [[nodiscard]] DocumentPtr document() const { return document_.lock(); }
  void setDocument(const DocumentPtr& document);

  /// The row of the current tool.
  [[nodiscard]] OptionsRow* currentRow() const;
  [[nodiscard]] QString toolName() const;

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  void makeRows();
  [[nodiscard]] OptionsRow* rowOf(Tool tool) const;
  void showCurrentTool();

  ToolState& toolState_;
  std::weak_ptr<Document> document_;
  QLabel* name_;
  QStackedWidget* rows_;
  OptionsRow* brush_;
  OptionsRow* eraser_;
  OptionsRow* selection_;
  OptionsRow* magicWand_;
  OptionsRow* zoom_;
  OptionsRow* freeTransform_;
  OptionsRow* none_;
  QPropertyNotifier notifier_;
};

}  // namespace orvanel
