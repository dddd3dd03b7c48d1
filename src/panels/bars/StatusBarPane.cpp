#include "panels/bars/StatusBarPane.h"

#include <QPainter>
#include <algorithm>
#include <utility>

#include "look/Look.h"
#include "panels/bars/StatusText.h"

namespace orvanel {

namespace {

constexpr int gap = look::space::section;
/// Less of the memory text says nothing.
constexpr int narrowestMemory = 96;
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
  if (!position) return StatusBarPane::tr("X: --  Y: --");
  QString text =
      StatusBarPane::tr("X: %1  Y: %2").arg(wholePixel(position->x())).arg(wholePixel(position->y()));
  if (dragSize) text += StatusBarPane::tr("  W: %1  H: %2").arg(dragSize->width).arg(dragSize->height);
  return text;
}

StatusBarPane::StatusBarPane(QWidget* parent) : QWidget(parent) {
  setObjectName(QStringLiteral("statusBar"));
  setAccessibleName(tr("Status"));
  setFixedHeight(look::size::control);
  zoom_ = new StatusText(tr("Zoom"), QStringLiteral("3200.00%"), this);
  position_ = new StatusText(tr("Pointer position"), QStringLiteral("X: 16384"), this);
  canvasSize_ = new StatusText(tr("Canvas size"), QStringLiteral("16384 × 16384"), this);
  memory_ = new StatusText(tr("Memory use"), QString(), this);
  note_ = new StatusText(tr("Note"), QString(), this);
  note_->setColor(look::color::text);
  note_->hide();

  noteTimer_.setSingleShot(true);
  connect(&noteTimer_, &QTimer::timeout, this, [this] {
    note_->setText(standingNote_);
    arrange();
  });
  memoryTimer_.setInterval(memoryInterval);
  connect(&memoryTimer_, &QTimer::timeout, this, &StatusBarPane::followMemory);
}

QString StatusBarPane::zoomText() const {
  return zoom_->text();
}

QString StatusBarPane::positionText() const {
  return position_->text();
}

QString StatusBarPane::canvasText() const {
  return canvasSize_->text();
}

QString StatusBarPane::memoryText() const {
  return memory_->text();
}

void StatusBarPane::showNote(const QString& text, std::chrono::milliseconds duration) {
  note_->setText(text);
  arrange();
  noteTimer_.start(duration);
}

void StatusBarPane::setStandingNote(const QString& text) {
  standingNote_ = text;
  if (noteTimer_.isActive()) return;
  note_->setText(text);
  arrange();
}

int StatusBarPane::widthOfPosition(int room) const {
  // Place for the size of a drag is kept free where nothing else needs it.
  constexpr int partsWithDrag = 4;
  const int whole = position_->widthOfParts(partsWithDrag);
  const int others = canvasSize_->sizeHint().width() + memory_->neededWidth() + 2 * gap;
  if (whole + others <= room) return whole;
  return std::max(position_->widthOfParts(2), position_->neededWidth());
}

void StatusBarPane::arrange() {
  int left = look::space::wide;
  const int right = width() - look::space::wide;
  const auto place = [&](StatusText& text, int textWidth) {
    text.setGeometry(left, 0, std::min(textWidth, right - left), height());
    text.setVisible(text.width() > 0);
    left += textWidth + gap;
  };
  place(*zoom_, zoom_->sizeHint().width());
  place(*position_, widthOfPosition(right - left));
  const int memoryWidth = memory_->neededWidth();
  const bool hasNote = !note_->text().isEmpty();
  const int afterCanvas = left + canvasSize_->sizeHint().width() + gap;
  const bool showsCanvas =
      left + canvasSize_->neededWidth() <= right && (!hasNote || afterCanvas + note_->neededWidth() <= right);
  canvasSize_->setVisible(showsCanvas);
  if (showsCanvas) place(*canvasSize_, canvasSize_->sizeHint().width());
  const int rest = right - left;
  note_->setGeometry(left, 0, std::max(0, rest), height());
  note_->setVisible(hasNote);
  const int shownMemory = std::min(memoryWidth, rest);
  memory_->setGeometry(right - shownMemory, 0, std::max(0, shownMemory), height());
  memory_->setVisible(!hasNote && shownMemory >= std::min(memoryWidth, narrowestMemory));
  tellWhatIsCut();
}

void StatusBarPane::tellWhatIsCut() {
  QStringList cut;
  for (const StatusText* text : {zoom_, position_, canvasSize_, memory_, note_}) {
    if (!text->text().isEmpty() && !text->isWhole()) cut << text->text().toHtmlEscaped();
  }
  // Tooltips interpret markup, and notes may contain names.
  setToolTip(cut.isEmpty() ? QString()
                           : QStringLiteral("<span>%1</span>").arg(cut.join(QStringLiteral("<br>"))));
}

void StatusBarPane::resizeEvent(QResizeEvent* /*event*/) {
  arrange();
}

void StatusBarPane::setDocument(const DocumentPtr& document) {
  if (document != nullptr && document == document_.lock()) return;
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
  zoom_->setText(document ? document->zoomDisplayString() : QString());
  arrange();
}

void StatusBarPane::updatePosition() {
  const auto document = document_.lock();
  position_->setText(
      document ? cursorPositionText(document->cursorDocumentPosition.value(), document->dragSize.value())
               : QString());
  arrange();
}

void StatusBarPane::updateCanvasSize() {
  const auto document = document_.lock();
  canvasSize_->setText(
      document
          ? QStringLiteral("%1 × %2").arg(document->canvasWidth.value()).arg(document->canvasHeight.value())
          : QString());
  arrange();
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
    memory_->setText({});
    arrange();
    memoryTimer_.stop();
    return;
  }
  const std::int64_t undoBytes = document->undoStack.totalMemoryCost();
  memory_->setText(
      tr("Memory: Layers %1, Undo %2").arg(byteCountText(document->memoryUsage()), byteCountText(undoBytes)));
  arrange();
  quietReadings_ = 0;
  if (undoBytes > 0) memoryTimer_.start();
}

void StatusBarPane::followMemory() {
  const QString before = memory_->text();
  const int quietReadings = quietReadings_;
  updateMemory();
  quietReadings_ = memory_->text() == before ? quietReadings + 1 : 0;
  if (quietReadings_ >= readingsUntilQuiet) memoryTimer_.stop();
}

void StatusBarPane::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  painter.fillRect(rect(), look::color::pane);
  painter.fillRect(QRectF(0, 0, width(), look::hairline(*this)), look::color::divider);
}

}  // namespace orvanel
