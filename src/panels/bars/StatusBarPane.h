// The status bar: zoom, pointer position, canvas size and memory use of the active document. Owned by the
// window; observes the document and never changes it. Main thread only.
#pragma once

#include <QLabel>
#include <QPointF>
#include <QTimer>
#include <QWidget>
#include <cstdint>
#include <optional>
#include <vector>

#include "model/Document.h"

namespace orvanel {

/// With decimal units: "999 B", "1 KB", "1.5 MB", "2.0 GB".
[[nodiscard]] QString byteCountText(std::int64_t bytes);

/// "X: 3  Y: 4", followed by the size of a drag in progress; dashes without a position.
[[nodiscard]] QString cursorPositionText(const std::optional<QPointF>& position,
                                         const std::optional<Document::DragSize>& dragSize);

class StatusBarPane : public QWidget {
  Q_OBJECT

 public:
  explicit StatusBarPane(QWidget* parent = nullptr);

  [[nodiscard]] DocumentPtr document() const { return document_.lock(); }
  void setDocument(const DocumentPtr& document);

  [[nodiscard]] QString zoomText() const { return zoomLabel_->text(); }
  [[nodiscard]] QString positionText() const { return positionLabel_->text(); }
  [[nodiscard]] QString canvasText() const { return canvasLabel_->text(); }
  [[nodiscard]] QString memoryText() const { return memoryLabel_->text(); }

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  QLabel* addLabel(const QString& accessibleName, const QString& widestText);
  void follow(const DocumentChanges& changes);
  void updateZoom();
  void updatePosition();
  void updateCanvasSize();
  void scheduleMemory();
  void updateMemory();
  void followMemory();

  std::weak_ptr<Document> document_;
  ChangeStream::Subscription changes_;
  QLabel* zoomLabel_;
  QLabel* positionLabel_;
  QLabel* canvasLabel_;
  QLabel* memoryLabel_;
  /// Runs while snapshots may still be compressed in the background.
  QTimer memoryTimer_;
  int quietReadings_ = 0;
  bool memoryScheduled_ = false;
};

}  // namespace orvanel
