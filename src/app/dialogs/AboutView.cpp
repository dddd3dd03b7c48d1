#include "app/dialogs/AboutView.h"

#include <QIcon>
#include <QLabel>
#include <QVBoxLayout>

#include "look/Look.h"

namespace orvanel {

namespace {

constexpr int iconEdge = 96;

QLabel* addLine(QVBoxLayout& column, const QString& text, const QFont& font, const QColor& ink) {
  auto* label = new QLabel(text);
  label->setFont(font);
  label->setAlignment(Qt::AlignHCenter);
  QPalette palette = label->palette();
  palette.setColor(QPalette::WindowText, ink);
  label->setPalette(palette);
  column.addWidget(label);
  return label;
}

}  // namespace

AboutView::AboutView(QWidget* parent) : QDialog(parent) {
  setObjectName(QStringLiteral("about"));
  setWindowTitle(QStringLiteral("About Orvanel"));
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(48, 28, 48, 28);
  column->setSpacing(4);
  auto* picture = new QLabel;
  picture->setAlignment(Qt::AlignHCenter);
  picture->setPixmap(
      QIcon(QStringLiteral(":/app/orvanel.svg")).pixmap(QSize(iconEdge, iconEdge), devicePixelRatio()));
  column->addWidget(picture);
  column->addSpacing(10);
  addLine(*column, QStringLiteral("Orvanel"), look::font(20, QFont::DemiBold), look::color::text);
  addLine(*column, QStringLiteral("Version 0.1"), look::font(12), look::color::secondaryText);
  column->addSpacing(6);
  addLine(*column, QStringLiteral("A layered image editor by Fennimoor"), look::font(11),
          look::color::secondaryText);
  column->setSizeConstraint(QLayout::SetFixedSize);
}

}  // namespace orvanel
