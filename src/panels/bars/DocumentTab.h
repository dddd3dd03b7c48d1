// One tab: the document's name, a dot for unsaved changes, and a close button while the pointer is over it.
// Owned by the tab bar; observes its document. Main thread only.
#pragma once

#include <QAbstractButton>
#include <functional>

#include "model/Document.h"

namespace orvanel {

class DocumentTab : public QAbstractButton {
  Q_OBJECT

 public:
  explicit DocumentTab(const DocumentPtr& document, QWidget* parent = nullptr);

  /// Documents aren't kept alive.
  const std::weak_ptr<Document> document;
  const QUuid documentID;
  std::function<void()> onSelect;
  std::function<void()> onClose;
  std::function<void()> onCloseAll;
  std::function<void()> onCloseOthers;
  /// Called when the preferred width may have changed.
  std::function<void()> onWidthChanged;

  // Lengths in view points.
  static constexpr int narrowest = 120;
  static constexpr int widest = 240;
  /// Edge of the close button's symbol.
  static constexpr double closeButtonSize = 8.0;
  /// Diameter of the dot for unsaved changes.
  static constexpr double dirtyDotSize = 6.0;

  [[nodiscard]] bool isSelected() const { return isSelected_; }
  void setSelected(bool selected);
  void setHasOtherDocuments(bool hasOthers) { hasOtherDocuments_ = hasOthers; }
  [[nodiscard]] bool isHovering() const { return isHovering_; }
  /// Shows the close button while the pointer is over the tab.
  void setHovering(bool hovering);
  [[nodiscard]] bool showsDirtyDot() const;
  /// The document's name, fit for display.
  [[nodiscard]] QString shownName() const;
  [[nodiscard]] QAbstractButton* closeButton() const { return closeButton_; }

  struct ContextItem {
    QString title;
    std::function<void()> action;
    bool isEnabled = true;
    bool followsSeparator = false;
  };
  /// The items of the context menu, in order.
  [[nodiscard]] std::vector<ContextItem> contextItems() const;
  void openMenu(const QPoint& globalPoint);

  [[nodiscard]] QSize sizeHint() const override;

 protected:
  bool event(QEvent* event) override;
  /// A click only requests the selection; the window decides.
  void nextCheckState() override {}
  void resizeEvent(QResizeEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;

 private:
  void documentChanged();
  /// Where the document's file is; empty if it has none.
  [[nodiscard]] QString sourcePath() const;

  bool isSelected_ = false;
  bool hasOtherDocuments_ = false;
  bool isHovering_ = false;
  QAbstractButton* closeButton_;
  ChangeStream::Subscription changes_;
};

}  // namespace orvanel
