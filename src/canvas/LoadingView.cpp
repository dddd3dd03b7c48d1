#include "canvas/LoadingView.h"

#include <QDragEnterEvent>
#include <QDropEvent>
#include <QPainter>
#include <QPushButton>
#include <algorithm>
#include <cmath>

#include "canvas/FileDrop.h"
#include "canvas/LoadingCard.h"
#include "look/Look.h"
#include "raster/fragments/ScreenMapping.h"

namespace orvanel {
namespace {

constexpr int widestCard = 440;

}  // namespace

LoadingView::LoadingView(const MetalContext& context, QWidget* parent)
    : QWidget(parent), background_(context), checkerboard_(context), card_(new LoadingCard(this)) {
  setObjectName(QStringLiteral("loadingView"));
  setAccessibleName(card_->accessibleName());
  setAcceptDrops(true);
  setFocusPolicy(Qt::StrongFocus);
  setCursor(Qt::BusyCursor);
  // Every pixel is painted.
  setAttribute(Qt::WA_OpaquePaintEvent);
  connect(&card_->cancelButton(), &QAbstractButton::clicked, this, [this] {
    if (onCancel) onCancel();
  });
}

QPushButton& LoadingView::cancelButton() const {
  return card_->cancelButton();
}

QProgressBar& LoadingView::progressBar() const {
  return card_->progressBar();
}

QString LoadingView::title() const {
  return card_->title();
}

void LoadingView::setFile(const QString& name, int others) {
  card_->setFile(name, others);
  setAccessibleName(card_->title());
}

void LoadingView::setPreview(const QSize& canvas, const QImage& picture) {
  canvas_ = canvas;
  picture_ = picture;
  frame_ = {};
  update();
}

void LoadingView::setProgress(double fraction) {
  card_->setProgress(fraction);
}

QSize LoadingView::drawablePixels() const {
  const double scale = devicePixelRatioF();
  return {static_cast<int>(std::lround(width() * scale)), static_cast<int>(std::lround(height() * scale))};
}

CanvasViewContext LoadingView::viewContext() const {
  const QSize pixels = drawablePixels();
  CanvasViewContext context;
  context.viewportWidth = pixels.width();
  context.viewportHeight = pixels.height();
  context.canvasWidth = canvas_.width();
  context.canvasHeight = canvas_.height();
  context.zoom = canvas_.isEmpty() ? 1.0 : initialZoom(canvas_, size());
  context.scaleFactor = devicePixelRatioF();
  return context;
}

QRect LoadingView::pictureRect() const {
  if (canvas_.isEmpty()) return {};
  const CanvasViewUniforms view = viewUniforms(viewContext());
  const QSize pixels = drawablePixels();
  const PixelSpan columns = AxisMapping::horizontal(view).inside(0, pixels.width());
  const PixelSpan rows = AxisMapping::vertical(view).inside(0, pixels.height());
  return {columns.begin, rows.begin, columns.length(), rows.length()};
}

// The passes of the canvas draw what stands around and behind the document, so that nothing of it moves when
// the document comes.
QImage LoadingView::drawFrame() const {
  const QSize pixels = drawablePixels();
  QImage frame(pixels, QImage::Format_RGB32);
  if (frame.isNull()) return frame;
  RenderEncoder encoder({reinterpret_cast<std::uint32_t*>(frame.bits()),
                         static_cast<std::size_t>(frame.bytesPerLine()) / sizeof(std::uint32_t),
                         pixels.width(), pixels.height()});
  const CanvasViewContext context = viewContext();
  background_.render(encoder, context, nullptr);
  if (!canvas_.isEmpty()) checkerboard_.render(encoder, context, nullptr);
  encoder.endEncoding();
  paintPicture(frame);
  return frame;
}

// The toolkit spreads the rows of a large picture over the threads that read files, and would wait for them.
void LoadingView::paintPicture(QImage& frame) const {
  constexpr int rowsAtOnce = 32;
  const QRect place = pictureRect();
  if (picture_.isNull() || place.isEmpty()) return;
  QPainter painter(&frame);
  painter.setRenderHint(QPainter::SmoothPixmapTransform);
  for (int y = place.top(); y <= place.bottom(); y += rowsAtOnce) {
    painter.setClipRect(place.left(), y, place.width(), rowsAtOnce);
    painter.drawImage(place, picture_);
  }
}

void LoadingView::paintEvent(QPaintEvent* /*event*/) {
  if (frame_.size() != drawablePixels()) frame_ = drawFrame();
  QPainter painter(this);
  // Map each frame pixel to exactly one screen pixel, at fractional scales too.
  const QTransform toDevice = painter.deviceTransform();
  const QPointF corner = toDevice.map(QPointF(0.0, 0.0));
  painter.setWorldTransform(QTransform::fromTranslate(std::round(corner.x()), std::round(corner.y())) *
                            toDevice.inverted());
  painter.drawImage(QPoint(0, 0), frame_);
}

void LoadingView::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  const int cardWidth = std::min(widestCard, width() - 2 * look::space::section);
  const int cardHeight = card_->sizeHint().height();
  card_->setGeometry((width() - cardWidth) / 2, height() - look::space::section - cardHeight, cardWidth,
                     cardHeight);
}

void LoadingView::dragEnterEvent(QDragEnterEvent* event) {
  if (!fileDrop::localFiles(*event->mimeData()).isEmpty()) fileDrop::acceptAsCopy(*event);
}

void LoadingView::dropEvent(QDropEvent* event) {
  const QStringList files = fileDrop::localFiles(*event->mimeData());
  if (files.isEmpty()) return;
  fileDrop::acceptAsCopy(*event);
  if (openFiles) openFiles(files);
}

}  // namespace orvanel
