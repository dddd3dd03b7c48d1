// The placeholder for the canvas while no document is open: what can be done, and the recent files. Owned by
// the canvas pane; main thread only.
#pragma once

#include <QStringList>
#include <QWidget>
#include <functional>
#include <vector>

#include "canvas/RecentFilesView.h"

class QLabel;

namespace orvanel {

class NoDocumentView : public QWidget {
  Q_OBJECT

 public:
  explicit NoDocumentView(QWidget* parent = nullptr);

  /// Opens dropped files and reports failures to the user.
  std::function<void(const QStringList&)> openFiles;
  // What the links and the recent files ask for.
  std::function<void()> onNew;
  std::function<void()> onOpen;
  std::function<void(const QString& path)> onOpenRecent;
  /// Called when the view comes up; the list of recent files may be old by then.
  std::function<void()> onShown;

  void setRecentEntries(const std::vector<RecentEntry>& entries);

  [[nodiscard]] QAbstractButton& newLink() const { return *newLink_; }
  [[nodiscard]] QAbstractButton& openLink() const { return *openLink_; }
  [[nodiscard]] RecentFilesView& recentFiles() const { return *recentFiles_; }

 protected:
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dropEvent(QDropEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void showEvent(QShowEvent* event) override;

 private:
  void arrange();

  /// Symbol, title and sentence; everything else stands beneath.
  QWidget* message_;
  QAbstractButton* newLink_;
  QAbstractButton* openLink_;
  RecentFilesView* recentFiles_;
};

}  // namespace orvanel
