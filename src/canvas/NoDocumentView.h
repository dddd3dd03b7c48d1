// The placeholder for the canvas while no document is open. Owned by the canvas pane; main thread only.
#pragma once

#include <QStringList>
#include <QWidget>
#include <functional>

namespace orvanel {

class NoDocumentView : public QWidget {
 public:
  explicit NoDocumentView(QWidget* parent = nullptr);

  /// Opens dropped files and reports failures to the user.
  std::function<void(const QStringList&)> openFiles;

 protected:
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dropEvent(QDropEvent* event) override;
};

}  // namespace orvanel
