// The status bar: zoom, pointer position, canvas size and memory use of the active document, and short notes.
// Owned by the window; observes the document and never changes it. Main thread only.
#pragma once

#include <QPointF>
#include <QTimer>
#include <QWidget>
#include <chrono>
#include <cstdint>
#include <optional>

#include "model/Document.h"

namespace orvanel {

/// With decimal units: "999 B", "1 KB", "1.5 MB", "2.0 GB".
[[nodiscard]] QString byteCountText(std::int64_t bytes);

/// "X: 3  Y: 4", followed by the size of a drag in progress; dashes without a position.
[[nodiscard]] QString cursorPositionText(const std::optional<QPointF>& position,
                                         const std::optional<Document::DragSize>& dragSize);

class StatusText;

class StatusBarPane : public QWidget {
  Q_OBJECT

 public:
  explicit StatusBarPane(QWidget* parent = nullptr);

  [[nodiscard]] DocumentPtr document() const { return document_.lock(); }
  void setDocument(const DocumentPtr& document);

  /// Shows a short note for a while, in the place of texts that matter less.
  void showNote(const QString& text, std::chrono::milliseconds duration = noteDuration);
  /// Shows a note for as long as it is true, in the same place; short notes cover it for their time. An empty
  /// text ends it.
  void setStandingNote(const QString& text);

  // The texts; in a narrow window the last ones are shortened or left out.
  [[nodiscard]] StatusText& zoom() const { return *zoom_; }
  [[nodiscard]] StatusText& position() const { return *position_; }
  [[nodiscard]] StatusText& canvasSize() const { return *canvasSize_; }
  [[nodiscard]] StatusText& memory() const { return *memory_; }
  [[nodiscard]] StatusText& note() const { return *note_; }
  [[nodiscard]] QString zoomText() const;
  [[nodiscard]] QString positionText() const;
  [[nodiscard]] QString canvasText() const;
  [[nodiscard]] QString memoryText() const;

 protected:
  void resizeEvent(QResizeEvent* event) override;
  void paintEvent(QPaintEvent* event) override;

 private:
  static constexpr std::chrono::seconds noteDuration{5};

  /// Gives each text its place, the first ones before the others.
  void arrange();
  [[nodiscard]] int widthOfPosition(int room) const;
  void tellWhatIsCut();
  void follow(const DocumentChanges& changes);
  void updateZoom();
  void updatePosition();
  void updateCanvasSize();
  void scheduleMemory();
  void updateMemory();
  void followMemory();

  std::weak_ptr<Document> document_;
  ChangeStream::Subscription changes_;
  StatusText* zoom_;
  StatusText* position_;
  StatusText* canvasSize_;
  StatusText* memory_;
  StatusText* note_;
  QString standingNote_;
  QTimer noteTimer_;
  /// Runs while snapshots may still be compressed in the background.
  QTimer memoryTimer_;
  int quietReadings_ = 0;
  bool memoryScheduled_ = false;
};

}  // namespace orvanel
