// The row of tabs above the canvas, one per open document in order, and a button for a new document. Owned by
// the window, which sets the documents and handles the requests. Main thread only.
#pragma once

#include <QUuid>
#include <QWidget>
#include <functional>
#include <optional>
#include <vector>

#include "panels/bars/DocumentTab.h"

namespace orvanel {

class SymbolButton;

class DocumentTabBar : public QWidget {
  Q_OBJECT

 public:
  explicit DocumentTabBar(QWidget* parent = nullptr);

  std::function<void(const QUuid&)> onSelect;
  std::function<void(const QUuid&)> onClose;
  std::function<void(const QUuid&)> onCloseOthers;
  std::function<void()> onCloseAll;
  std::function<void()> onNewDocument;

  /// Shows these documents and scrolls to the tab of the active one.
  void setDocuments(const std::vector<DocumentPtr>& documents, const std::optional<QUuid>& activeDocumentID);

  [[nodiscard]] const std::vector<DocumentTab*>& tabs() const { return tabs_; }
  [[nodiscard]] QAbstractButton* newTabButton() const;

  [[nodiscard]] QSize sizeHint() const override;
  [[nodiscard]] QSize minimumSizeHint() const override;

 protected:
  void resizeEvent(QResizeEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;

 private:
  DocumentTab* makeTab(const DocumentPtr& document);
  void layOutTabs();
  void revealSelectedTab();
  [[nodiscard]] int roomForTabs() const;

  /// Clips the tabs if they don't all fit; the wheel scrolls them.
  QWidget* strip_;
  SymbolButton* newTabButton_;
  std::vector<DocumentTab*> tabs_;
  int scrollOffset_ = 0;
  int tabsWidth_ = 0;
};

}  // namespace orvanel
