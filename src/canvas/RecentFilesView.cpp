#include "canvas/RecentFilesView.h"

#include <QAbstractButton>
#include <QDir>
#include <QKeyEvent>
#include <QPainter>
#include <algorithm>

#include "look/Look.h"
#include "look/Symbol.h"

namespace orvanel {

namespace {

constexpr QSize pictureSize{120, 88};
constexpr int mostColumns = 5;
constexpr int mostRows = 2;

/// One file: its picture, and its name beneath.
class RecentCard : public QAbstractButton {
 public:
  RecentCard(RecentEntry entry, QWidget* parent) : QAbstractButton(parent), entry_(std::move(entry)) {
    setFont(look::font(look::type::small));
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_Hover);
    setCursor(Qt::PointingHandCursor);
    setText(entry_.name);
    // Names are data: a tooltip would take them for markup.
    const QString place = QDir::toNativeSeparators(entry_.path);
    setToolTip(QStringLiteral("<span>%1</span>").arg(place.toHtmlEscaped()));
    setAccessibleDescription(place);
    setAccessibleName(RecentFilesView::tr("Open %1").arg(entry_.name));
    resize(sizeHint());
  }

  [[nodiscard]] QSize sizeHint() const override {
    return {pictureSize.width() + 2 * look::space::normal,
            pictureSize.height() + fontMetrics().height() + 3 * look::space::normal};
  }

 protected:
  void paintEvent(QPaintEvent* /*event*/) override {
    using namespace look;
    QPainter painter(this);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    const QRectF frame = QRectF(rect()).adjusted(1, 1, -1, -1);
    if (underMouse() || isDown() || hasFocus()) {
      painter.setPen(hasFocus() ? QPen(color::accent, size::focusRing) : QPen(Qt::NoPen));
      painter.setBrush(isDown() ? color::pressed : color::hover);
      painter.drawRoundedRect(frame, radius::panel, radius::panel);
    }
    drawPicture(painter, {space::normal, space::normal, pictureSize.width(), pictureSize.height()});
    const QRect nameBox(space::normal, pictureSize.height() + 2 * space::normal, pictureSize.width(),
                        fontMetrics().height());
    painter.setPen(color::text);
    painter.drawText(nameBox, Qt::AlignCenter | Qt::TextSingleLine,
                     fontMetrics().elidedText(entry_.name, Qt::ElideMiddle, nameBox.width()));
  }

  void keyPressEvent(QKeyEvent* event) override {
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) return click();
    QAbstractButton::keyPressEvent(event);
  }

 private:
  void drawPicture(QPainter& painter, const QRectF& box) const {
    using namespace look;
    if (entry_.picture.isNull()) {
      QRectF symbolBox(0, 0, size::bar, size::bar);
      symbolBox.moveCenter(box.center());
      paintSymbol(painter, QStringLiteral("square.stack"), symbolBox, color::secondaryText);
      return;
    }
    QSizeF shown = entry_.picture.size();
    if (shown.width() > box.width() || shown.height() > box.height()) {
      shown.scale(box.size(), Qt::KeepAspectRatio);
    }
    QRectF place(QPointF(), shown);
    place.moveCenter(box.center());
    const double line = hairline(*this);
    painter.fillRect(place.adjusted(-line, -line, line, line), color::border);
    painter.fillRect(place, color::field);
    painter.drawImage(place, entry_.picture);
  }

  RecentEntry entry_;
};

}  // namespace

RecentFilesView::RecentFilesView(QWidget* parent) : QWidget(parent) {
  setAccessibleName(tr("Recent files"));
}

void RecentFilesView::setEntries(const std::vector<RecentEntry>& entries) {
  for (QAbstractButton* card : cards_) card->deleteLater();
  cards_.clear();
  for (const RecentEntry& entry : entries) {
    auto* card = new RecentCard(entry, this);
    connect(card, &QAbstractButton::clicked, this, [this, path = entry.path] {
      if (onOpen) onOpen(path);
    });
    cards_.push_back(card);
  }
}

void RecentFilesView::fitInto(const QSize& room) {
  if (cards_.empty()) return resize(0, 0);
  const QSize card = cards_.front()->size();
  const auto fitting = [](int length, int cardLength, int most) {
    return std::min(most, (length + look::space::normal) / (cardLength + look::space::normal));
  };
  const int count = static_cast<int>(cards_.size());
  const int columns = std::min(count, fitting(room.width(), card.width(), mostColumns));
  const int rows = columns == 0 ? 0
                                : std::min((count + columns - 1) / columns,
                                           fitting(room.height(), card.height(), mostRows));
  for (int index = 0; index < count; ++index) {
    QAbstractButton* shown = cards_[static_cast<std::size_t>(index)];
    shown->setVisible(index < columns * rows);
    if (index >= columns * rows) continue;
    shown->move(index % columns * (card.width() + look::space::normal),
                index / columns * (card.height() + look::space::normal));
  }
  const auto length = [](int cardCount, int cardLength) {
    return cardCount == 0 ? 0 : cardCount * (cardLength + look::space::normal) - look::space::normal;
  };
  resize(length(columns, card.width()), length(rows, card.height()));
}

}  // namespace orvanel
