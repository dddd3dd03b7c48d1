#include "app/dialogs/PreviewPane.h"

#include <QPainter>

#include "io/files/FileName.h"
#include "look/Look.h"

namespace orvanel {

namespace {

constexpr int paneWidth = 200;
/// Enough for the pane on a screen of twice the usual resolution.
constexpr int pictureSide = 400;

}  // namespace

PreviewPane::PreviewPane(QWidget* parent) : QWidget(parent), previews_(pictureSide) {
  setFixedWidth(paneWidth);
  setFont(look::font(look::type::small));
  setAccessibleName(tr("Preview"));
}

QSize PreviewPane::sizeHint() const {
  return {paneWidth, paneWidth};
}

void PreviewPane::showFile(const QString& path) {
  // Choosing a file changes the typed name as well.
  if (path == path_) return;
  path_ = path;
  previews_.cancel();
  picture_ = {};
  message_.clear();
  update();
  setAccessibleDescription(displayName(path));
  previews_.request(path, [this](const FilePreview& preview) {
    picture_ = preview.picture;
    message_ = preview.exists && picture_.isNull() ? tr("No preview") : QString();
    update();
  });
}

void PreviewPane::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::SmoothPixmapTransform);
  const QRectF frame = QRectF(rect()).adjusted(look::space::normal, 0, 0, 0);
  if (picture_.isNull()) {
    painter.setPen(look::color::secondaryText);
    painter.drawText(frame, Qt::AlignCenter, message_);
    return;
  }
  // Small pictures at their own size, so that icons don't become blurs.
  QSizeF size = QSizeF(picture_.size());
  if (size.width() > frame.width() || size.height() > frame.height()) {
    size.scale(frame.size(), Qt::KeepAspectRatio);
  }
  QRectF place(QPointF(), size);
  place.moveCenter(frame.center());
  painter.fillRect(place, look::color::field);
  painter.drawImage(place, picture_);
  painter.setPen(QPen(look::color::divider, look::hairline(*this)));
  painter.drawRect(place);
}

}  // namespace orvanel
