// The row of tabs above the canvas: one per open document in order, then that of a file being opened and a
// button for a new document, and at the end a list of all documents. Owned by the window, which sets the
// documents and handles the requests. Main thread only.
#pragma once

#include <QUuid>
#include <QWidget>
#include <functional>
#include <optional>
#include <vector>

#include "panels/bars/DocumentTab.h"
#include "panels/bars/LoadingTab.h"

class QMenu;

namespace orvanel {

class SymbolButton;

/// Holds the tabs and clips those that don't fit. A list of tabs to screen readers.
class TabStrip : public QWidget {
  Q_OBJECT

 public:
  using QWidget::QWidget;
};

class DocumentTabBar : public QWidget {
  Q_OBJECT

 public:
  explicit DocumentTabBar(QWidget* parent = nullptr);

  std::function<void(const QUuid&)> onSelect;
  std::function<void(const QUuid&)> onClose;
  std::function<void(const QUuid&)> onCloseOthers;
  std::function<void()> onCloseAll;
  std::function<void()> onNewDocument;
  // What the tab of the file being opened asks for.
  std::function<void()> onSelectLoading;
  std::function<void()> onCancelLoading;

  /// Shows these documents and scrolls to the tab of the active one.
  void setDocuments(const std::vector<DocumentPtr>& documents, const std::optional<QUuid>& activeDocumentID);

  /// Shows a tab for a file that is being opened, or none.
  void setLoading(const std::optional<LoadingTabContent>& content);

  [[nodiscard]] const std::vector<DocumentTab*>& tabs() const { return tabs_; }
  /// Hidden while no file is being opened.
  [[nodiscard]] LoadingTab* loadingTab() const { return loadingTab_; }
  [[nodiscard]] QAbstractButton* newTabButton() const;
  [[nodiscard]] QAbstractButton* listButton() const;
  // Shown while the tabs don't fit.
  [[nodiscard]] QAbstractButton* scrollBackButton() const;
  [[nodiscard]] QAbstractButton* scrollForwardButton() const;

  [[nodiscard]] QSize sizeHint() const override;
  [[nodiscard]] QSize minimumSizeHint() const override;

 protected:
  void resizeEvent(QResizeEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
  void enterEvent(QEnterEvent* event) override;
  void leaveEvent(QEvent* event) override;

 private:
  SymbolButton* makeButton(const QString& symbol, double symbolSize, const QString& name);
  DocumentTab* makeTab(const DocumentPtr& document);
  void holdPlaces(const std::vector<DocumentPtr>& documents);
  void layOutTabs();
  void placeTabs();
  void placeButtons(int stripWidth, bool overflows);
  [[nodiscard]] int loadingWidth() const;
  [[nodiscard]] std::vector<int> wishedWidths() const;
  [[nodiscard]] int roomForTabs(bool overflows) const;
  [[nodiscard]] int furthestOffset() const;
  void scrollBy(int distance);
  void revealSelectedTab();
  void hoverTabUnderPointer();
  void showList();

  TabStrip* strip_;
  LoadingTab* loadingTab_;
  SymbolButton* newTabButton_;
  SymbolButton* scrollBackButton_;
  SymbolButton* scrollForwardButton_;
  SymbolButton* listButton_;
  std::vector<DocumentTab*> tabs_;
  /// Widths of the tabs, in order.
  std::vector<int> widths_;
  int scrollOffset_ = 0;
  bool isPointerInside_ = false;
  /// Since the pointer closed a tab the others keep its place, so that it can close the next without moving.
  bool isHoldingPlaces_ = false;
};

}  // namespace orvanel
