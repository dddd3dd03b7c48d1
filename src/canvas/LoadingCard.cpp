#include "canvas/LoadingCard.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>

#include "look/Look.h"

namespace orvanel {
namespace {

constexpr int barThickness = 4;
constexpr int steps = 1000;
/// Shown even before any progress has been made.
constexpr double shortestFraction = 0.03;

/// A thin rounded bar.
class ThinProgressBar : public QProgressBar {
 public:
  ThinProgressBar() {
    setRange(0, steps);
    setTextVisible(false);
    setFixedHeight(barThickness);
  }

 protected:
  void paintEvent(QPaintEvent* /*event*/) override {
    constexpr double radius = barThickness / 2.0;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(look::color::pressed);
    painter.drawRoundedRect(rect(), radius, radius);
    const double fraction = std::max(shortestFraction, static_cast<double>(value()) / steps);
    painter.setBrush(look::color::accent);
    painter.drawRoundedRect(QRectF(0, 0, std::max<double>(barThickness, width() * fraction), barThickness),
                            radius, radius);
  }
};

}  // namespace

LoadingCard::LoadingCard(QWidget* parent)
    : QWidget(parent),
      titleLabel_(new QLabel),
      progressBar_(new ThinProgressBar),
      cancelButton_(new QPushButton(tr("Cancel"))) {
  setObjectName(QStringLiteral("loadingCard"));
  setCursor(Qt::ArrowCursor);
  titleLabel_->setTextFormat(Qt::PlainText);
  titleLabel_->setFont(look::font(look::type::normal, QFont::DemiBold));
  // The title is cut to the room there is.
  titleLabel_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
  // Until it names the file.
  setAccessibleName(tr("A file that is being opened"));
  progressBar_->setAccessibleName(tr("Progress"));
  cancelButton_->setFocusPolicy(Qt::TabFocus);
  cancelButton_->setToolTip(tr("Cancel (Esc): stop opening the file"));

  auto* column = new QVBoxLayout;
  column->setSpacing(look::space::normal);
  column->addWidget(titleLabel_);
  column->addWidget(progressBar_);
  auto* row = new QHBoxLayout(this);
  row->setContentsMargins(look::space::section, look::space::wide, look::space::wide, look::space::wide);
  row->setSpacing(look::space::section);
  row->addLayout(column, 1);
  row->addWidget(cancelButton_);
}

void LoadingCard::setFile(const QString& name, int others) {
  title_ = others == 0 ? tr("Opening %1...").arg(name)
                       : tr("Opening %1 and %n more...", nullptr, others).arg(name);
  titleLabel_->setAccessibleName(title_);
  setAccessibleName(title_);
  elideTitle();
}

void LoadingCard::setProgress(double fraction) {
  progressBar_->setValue(static_cast<int>(std::lround(std::clamp(fraction, 0.0, 1.0) * steps)));
}

void LoadingCard::elideTitle() {
  titleLabel_->setText(titleLabel_->fontMetrics().elidedText(title_, Qt::ElideMiddle, titleLabel_->width()));
}

void LoadingCard::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  layout()->activate();
  elideTitle();
}

void LoadingCard::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const double line = look::hairline(*this);
  painter.setPen(QPen(look::color::border, line));
  painter.setBrush(look::color::pane);
  painter.drawRoundedRect(QRectF(rect()).adjusted(line / 2, line / 2, -line / 2, -line / 2),
                          look::radius::panel, look::radius::panel);
}

}  // namespace orvanel
