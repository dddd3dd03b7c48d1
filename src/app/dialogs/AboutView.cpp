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
  look::setTextColor(*label, ink);
  column.addWidget(label);
  return label;
}

}  // namespace

AboutView::AboutView(QWidget* parent) : QDialog(parent) {
  setObjectName(QStringLiteral("about"));
  setWindowTitle(tr("About Orvanel"));
  auto* column = new QVBoxLayout(this);
  constexpr int margin = 2 * look::space::dialogMargin;
  column->setContentsMargins(margin, margin, margin, margin);
  column->setSpacing(look::space::tight);
  auto* picture = new QLabel;
  picture->setAlignment(Qt::AlignHCenter);
  picture->setPixmap(
      QIcon(QStringLiteral(":/app/orvanel.svg")).pixmap(QSize(iconEdge, iconEdge), devicePixelRatio()));
  column->addWidget(picture);
  column->addSpacing(look::space::normal);
  addLine(*column, QStringLiteral("Orvanel"), look::font(look::type::title, QFont::DemiBold),
          look::color::text);
  addLine(*column, tr("Version 0.1"), look::font(), look::color::secondaryText);
  column->addSpacing(look::space::tight);
  addLine(*column, tr("A layered image editor by Fennimoor"), look::font(look::type::small),
          look::color::secondaryText);
  column->setSizeConstraint(QLayout::SetFixedSize);
}

}  // namespace orvanel
