#include "panels/bars/StatusBarPane.h"

#include <QHBoxLayout>
#include <QPainter>
#include <chrono>
#include <utility>

#include "look/Look.h"

namespace orvanel {

namespace {

constexpr double fontSize = 11.0;
constexpr int barHeight = 24;
constexpr std::chrono::milliseconds memoryInterval{500};
/// Unchanged readings after which background compression is assumed to have finished.
constexpr int readingsUntilQuiet = 6;

int wholePixel(double coordinate) {
  return static_cast<int>(coordinate);
}

}  // namespace

QString byteCountText(std::int64_t bytes) {
  const auto count = static_cast<double>(bytes);
  if (bytes < 1000) return QStringLiteral("%1 B").arg(bytes);
  if (bytes < 1000000) return QString::asprintf("%.0f KB", count / 1000.0);
  if (bytes < 1000000000) return QString::asprintf("%.1f MB", count / 1000000.0);
  return QString::asprintf("%.1f GB", count / 1000000000.0);
}

QString cursorPositionText(const std::optional<QPointF>& position,
                           const std::optional<Document::DragSize>& dragSize) {
  if (!position) return QStringLiteral("X: --  Y: --");
  QString text = QStringLiteral("X: %1  Y: %2").arg(wholePixel(position->x())).arg(wholePixel(position->y()));
  if (dragSize) text += QStringLiteral("  W: %1  H: %2").arg(dragSize->width).arg(dragSize->height);
  return text;
}

StatusBarPane::StatusBarPane(QWidget* parent) : QWidget(parent) {
  setObjectName(QStringLiteral("statusBar"));
  setAccessibleName(QStringLiteral("Status"));
  setFixedHeight(barHeight);
  auto* row = new QHBoxLayout(this);
  row->setContentsMargins(12, 1, 12, 0);
  row->setSpacing(20);
  // Space for the widest usual texts is reserved, so that labels don't move with the pointer.
  zoomLabel_ = addLabel(QStringLiteral("Zoom"), QStringLiteral("66.66%"));
  positionLabel_ = addLabel(QStringLiteral("Pointer position"), QStringLiteral("X: 16384  Y: 16384"));
  canvasLabel_ = addLabel(QStringLiteral("Canvas size"), QString());
  row->addStretch(1);
  memoryLabel_ = addLabel(QStringLiteral("Memory"), QString());

  memoryTimer_.setInterval(memoryInterval);
  connect(&memoryTimer_, &QTimer::timeout, this, &StatusBarPane::followMemory);
}

QLabel* StatusBarPane::addLabel(const QString& accessibleName, const QString& widestText) {
  auto* label = new QLabel(this);
  label->setFont(look::font(fontSize));
  QPalette palette = label->palette();
  palette.setColor(QPalette::WindowText, look::color::secondaryText);
  label->setPalette(palette);
  label->setTextFormat(Qt::PlainText);
  label->setAccessibleName(accessibleName);
  if (!widestText.isEmpty()) label->setMinimumWidth(label->fontMetrics().horizontalAdvance(widestText));
  static_cast<QHBoxLayout*>(layout())->addWidget(label);
  return label;
}

void StatusBarPane::setDocument(const DocumentPtr& document) {
  if (document == document_.lock()) return;
  changes_ = {};
  document_ = document;
  if (document) {
    changes_ = document->changes().observe([this](const DocumentChanges& changes) { follow(changes); });
  }
  updateZoom();
  updatePosition();
  updateCanvasSize();
  updateMemory();
}

void StatusBarPane::follow(const DocumentChanges& changes) {
  using change::ViewChanged;
  if (containsAny<ViewChanged>(changes, ViewProperty::zoom)) updateZoom();
  if (containsAny<ViewChanged>(changes, ViewProperty::cursorDocumentPosition, ViewProperty::dragSize)) {
    updatePosition();
  }
  if (contains<change::CanvasChanged>(changes)) updateCanvasSize();
  // Everything that takes or returns memory is a step of the history.
  if (contains<change::HistoryChanged>(changes)) scheduleMemory();
}

void StatusBarPane::updateZoom() {
  const auto document = document_.lock();
  zoomLabel_->setText(document ? document->zoomDisplayString() : QString());
}

void StatusBarPane::updatePosition() {
  const auto document = document_.lock();
  positionLabel_->setText(
      document ? cursorPositionText(document->cursorDocumentPosition.value(), document->dragSize.value())
               : QString());
}

void StatusBarPane::updateCanvasSize() {
  const auto document = document_.lock();
  canvasLabel_->setText(
      document
          ? QStringLiteral("%1 × %2").arg(document->canvasWidth.value()).arg(document->canvasHeight.value())
          : QString());
}

void StatusBarPane::scheduleMemory() {
  // One command may change several of these, and each reading walks the whole history.
  if (std::exchange(memoryScheduled_, true)) return;
  QMetaObject::invokeMethod(
      this,
      [this] {
        memoryScheduled_ = false;
        updateMemory();
      },
      Qt::QueuedConnection);
}

void StatusBarPane::updateMemory() {
  const auto document = document_.lock();
  if (!document) {
    memoryLabel_->clear();
    memoryTimer_.stop();
    return;
  }
  const std::int64_t undoBytes = document->undoStack.totalMemoryCost();
  memoryLabel_->setText(QStringLiteral("Memory: Layers %1, Undo %2")
                            .arg(byteCountText(document->memoryUsage()), byteCountText(undoBytes)));
  quietReadings_ = 0;
  if (undoBytes > 0) memoryTimer_.start();
}

void StatusBarPane::followMemory() {
  const QString before = memoryLabel_->text();
  const int quietReadings = quietReadings_;
  updateMemory();
  quietReadings_ = memoryLabel_->text() == before ? quietReadings + 1 : 0;
  if (quietReadings_ >= readingsUntilQuiet) memoryTimer_.stop();
}

void StatusBarPane::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  painter.fillRect(rect(), look::color::pane);
  painter.fillRect(QRectF(0, 0, width(), look::hairline(*this)), look::color::divider);
}

}  // namespace orvanel
