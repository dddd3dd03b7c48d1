#include "panels/inspector/InspectorSection.h"

#include <QAbstractButton>
#include <QEvent>
#include <QGridLayout>
#include <QLabel>
#include <QPainter>
#include <QVBoxLayout>
#include <algorithm>

#include "look/Look.h"
#include "look/Symbol.h"

namespace orvanel {

namespace {

constexpr double chevronSize = 12;

/// The heading's text behind a chevron.
class SectionHeading : public QAbstractButton {
 public:
  explicit SectionHeading(QWidget* parent) : QAbstractButton(parent) {
    setCheckable(true);
    setChecked(true);
    setFocusPolicy(Qt::TabFocus);
    setFixedHeight(look::size::control);
    setFont(look::font(look::type::small, QFont::DemiBold));
  }

  [[nodiscard]] QSize sizeHint() const override {
    return {fontMetrics().horizontalAdvance(text()) + 3 * look::space::section, look::size::control};
  }

 protected:
  void paintEvent(QPaintEvent* /*event*/) override {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (hasFocus()) {
      painter.setPen(QPen(look::color::accent, look::size::focusRing));
      painter.drawRoundedRect(QRectF(rect()).adjusted(5, 1, -5, -1), look::radius::control,
                              look::radius::control);
    }
    QRectF chevron(look::space::normal, 0, chevronSize, chevronSize);
    chevron.moveTop((height() - chevronSize) / 2);
    look::paintSymbol(painter, isChecked() ? QStringLiteral("chevron.down") : QStringLiteral("chevron.right"),
                      chevron, underMouse() ? look::color::symbol : look::color::secondaryText);
    painter.setPen(look::color::text);
    painter.drawText(rect().adjusted(qRound(chevron.right()) + look::space::tight, 0, 0, 0),
                     Qt::AlignVCenter | Qt::TextSingleLine, text());
  }
  bool event(QEvent* event) override {
    if (event->type() == QEvent::Enter || event->type() == QEvent::Leave) update();
    return QAbstractButton::event(event);
  }
};

}  // namespace

InspectorSection::InspectorSection(QWidget* parent)
    : QWidget(parent), heading_(new SectionHeading(this)), contents_(new QWidget(this)) {
  rows_ = new QGridLayout(contents_);
  rows_->setContentsMargins(look::space::wide, 0, look::space::wide, look::space::normal);
  rows_->setHorizontalSpacing(look::space::normal);
  rows_->setVerticalSpacing(look::space::tight);
  rows_->setColumnStretch(1, 1);
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, look::space::tight, 0, look::space::tight);
  column->setSpacing(look::space::tight);
  column->addWidget(heading_);
  column->addWidget(contents_);
  connect(heading_, &QAbstractButton::toggled, contents_, &QWidget::setVisible);
}

QString InspectorSection::title() const {
  return heading_->text();
}

void InspectorSection::setTitle(const QString& title) {
  heading_->setText(title);
  setAccessibleName(title);
}

bool InspectorSection::isExpanded() const {
  return heading_->isChecked();
}

void InspectorSection::setExpanded(bool isExpanded) {
  heading_->setChecked(isExpanded);
}

QLabel* InspectorSection::addRow(const QString& label, QWidget* value) {
  auto* text = new QLabel(label, contents_);
  text->setTextFormat(Qt::PlainText);
  text->setFont(value->font());
  look::setTextColor(*text, look::color::secondaryText);
  text->setBuddy(value);
  const int row = rows_->rowCount();
  rows_->addWidget(text, row, 0, Qt::AlignRight | Qt::AlignVCenter);
  rows_->addWidget(value, row, 1);
  return text;
}

void InspectorSection::addWideRow(QWidget* value) {
  rows_->addWidget(value, rows_->rowCount(), 0, 1, 2);
}

int InspectorSection::labelWidth() const {
  int width = 0;
  for (int row = 0; row < rows_->rowCount(); ++row) {
    const QLayoutItem* item = rows_->itemAtPosition(row, 0);
    const auto* label = item != nullptr ? qobject_cast<const QLabel*>(item->widget()) : nullptr;
    if (label != nullptr) width = std::max(width, label->fontMetrics().horizontalAdvance(label->text()));
  }
  return width;
}

void InspectorSection::setLabelWidth(int width) {
  rows_->setColumnMinimumWidth(0, width);
}

void InspectorSection::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  const double line = look::hairline(*this);
  painter.fillRect(QRectF(0, height() - line, width(), line), look::color::divider);
}

}  // namespace orvanel
