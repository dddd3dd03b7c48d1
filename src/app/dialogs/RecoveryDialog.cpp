#include "app/dialogs/RecoveryDialog.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLocale>
#include <QPainter>
#include <QPushButton>
#include <QScrollArea>
#include <QVBoxLayout>
#include <algorithm>

#include "look/Look.h"
#include "look/TranslatedSentence.h"
#include "model/DisplayText.h"

namespace orvanel {

namespace {

constexpr QSize thumbnailFrame{96, 64};
constexpr int textWidth = 300;
/// More documents scroll.
constexpr int mostRowsShown = 5;

/// A document's picture, or an empty frame.
class ThumbnailView : public QWidget {
 public:
  explicit ThumbnailView(QImage picture) : picture_(std::move(picture)) { setFixedSize(thumbnailFrame); }

 protected:
  void paintEvent(QPaintEvent* /*event*/) override {
    QPainter painter(this);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    const double line = look::hairline(*this);
    const QRectF frame = QRectF(rect()).adjusted(line / 2, line / 2, -line / 2, -line / 2);
    QRectF place = frame;
    if (!picture_.isNull()) {
      place.setSize(QSizeF(picture_.size()).scaled(frame.size(), Qt::KeepAspectRatio));
      place.moveCenter(frame.center());
    }
    if (!picture_.isNull()) {
      painter.fillRect(place, look::color::field);
      painter.drawImage(place, picture_);
    }
    painter.setPen(QPen(look::color::divider, line));
    painter.drawRect(place);
  }

 private:
  QImage picture_;
};

QLabel* makeLabel(const QString& text, const QFont& font, const QColor& color) {
  auto* label = new QLabel;
  // Names and paths are data.
  label->setTextFormat(Qt::PlainText);
  label->setFont(font);
  label->setText(label->fontMetrics().elidedText(text, Qt::ElideMiddle, textWidth));
  if (label->text() != text) label->setToolTip(QStringLiteral("<span>%1</span>").arg(text.toHtmlEscaped()));
  look::setTextColor(*label, color);
  return label;
}

/// A sentence takes as many lines as it needs.
void showWhole(QLabel& label, const QString& sentence) {
  label.setText(sentence);
  label.setToolTip({});
  label.setWordWrap(true);
}

int answerData(RecoveryAnswer answer) {
  return static_cast<int>(answer);
}

QFrame* makeDivider() {
  auto* divider = new QFrame;
  divider->setFixedHeight(1);
  divider->setAutoFillBackground(true);
  QPalette palette = divider->palette();
  palette.setColor(QPalette::Window, look::color::divider);
  divider->setPalette(palette);
  return divider;
}

}  // namespace

RecoveryDialog::RecoveryDialog(const OrphanList& orphans, QWidget* parent)
    : QDialog(parent),
      continueButton_(new QPushButton(tr("Continue"))),
      laterButton_(new QPushButton(tr("Decide Later"))) {
  setObjectName(QStringLiteral("recoveryDialog"));
  setWindowTitle(tr("Recover Unsaved Documents"));
  auto* heading = new QLabel(tr("Recover Unsaved Documents"));
  heading->setFont(look::font(look::type::heading, QFont::DemiBold));
  auto* explanation = new QLabel(
      tr("Orvanel ended before these were saved. A restored document opens with its changes and overwrites "
         "nothing until you save it."));
  explanation->setWordWrap(true);
  look::setTextColor(*explanation, look::color::secondaryText);

  auto* list = new QWidget;
  auto* rows = new QVBoxLayout(list);
  rows->setContentsMargins(0, 0, 0, 0);
  rows->setSpacing(0);
  int shownHeight = 0;
  for (const Orphan& orphan : orphans) {
    if (rows->count() > 0) rows->addWidget(makeDivider());
    QWidget* row = makeRow(orphan);
    rows->addWidget(row);
    if (static_cast<int>(choices_.size()) <= mostRowsShown) shownHeight += row->sizeHint().height() + 1;
  }
  auto* scroll = new QScrollArea;
  scroll->setFrameShape(QFrame::NoFrame);
  scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  scroll->setFocusPolicy(Qt::NoFocus);
  scroll->setWidgetResizable(true);
  scroll->setWidget(list);
  scroll->setMinimumWidth(list->sizeHint().width());
  scroll->setFixedHeight(shownHeight);

  auto* buttons = new QDialogButtonBox;
  buttons->addButton(continueButton_, QDialogButtonBox::AcceptRole);
  buttons->addButton(laterButton_, QDialogButtonBox::RejectRole);
  continueButton_->setDefault(true);
  laterButton_->setToolTip(tr("Decide Later (Esc): all of them are offered again at the next start"));
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

  constexpr int margin = look::space::dialogMargin;
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(margin, margin, margin, margin);
  column->setSpacing(0);
  column->addWidget(heading);
  column->addSpacing(look::space::tight);
  column->addWidget(explanation);
  column->addSpacing(look::space::wide);
  column->addWidget(makeDivider());
  column->addWidget(scroll);
  column->addWidget(makeDivider());
  column->addSpacing(look::space::section);
  column->addWidget(buttons);
  continueButton_->setFocus();
}

QWidget* RecoveryDialog::makeRow(const Orphan& orphan) {
  const bool canBeRestored = orphan.obstacle.isEmpty();
  const QString name = canBeRestored ? displayText(orphan.name) : tr("Unknown document");
  QString place = look::translatedSentence(orphan.obstacle);
  if (canBeRestored) place = orphan.path.isEmpty() ? tr("Never saved to a file") : orphan.path;
  const QString time = QLocale().toString(orphan.time.toLocalTime(), QLocale::ShortFormat);
  auto* texts = new QVBoxLayout;
  texts->setSpacing(look::space::tight / 2);
  texts->addStretch();
  texts->addWidget(makeLabel(name, look::font(look::type::normal, QFont::DemiBold), look::color::text));
  const QFont small = look::font(look::type::small);
  QLabel* placeLabel = makeLabel(place, small, look::color::secondaryText);
  if (!canBeRestored) showWhole(*placeLabel, place);
  texts->addWidget(placeLabel);
  texts->addWidget(makeLabel(tr("Last changed %1").arg(time), small, look::color::secondaryText));
  texts->addStretch();

  auto* choice = new QComboBox;
  if (canBeRestored) choice->addItem(tr("Restore"), answerData(RecoveryAnswer::restore));
  choice->addItem(tr("Discard"), answerData(RecoveryAnswer::discard));
  choice->addItem(tr("Decide Later"), answerData(RecoveryAnswer::later));
  // What can't be restored now may be another time.
  choice->setCurrentIndex(canBeRestored ? 0 : choice->count() - 1);
  choice->setAccessibleName(tr("What to do with %1").arg(name));
  choice->setAccessibleDescription(QStringLiteral("%1, %2").arg(place, time));
  choices_.push_back(choice);

  auto* row = new QWidget;
  auto* layout = new QHBoxLayout(row);
  layout->setContentsMargins(0, look::space::wide, 0, look::space::wide);
  layout->setSpacing(look::space::section);
  layout->addWidget(new ThumbnailView(orphan.thumbnail));
  layout->addLayout(texts, 1);
  layout->addWidget(choice, 0, Qt::AlignVCenter);
  return row;
}

std::vector<RecoveryAnswer> RecoveryDialog::answers() const {
  std::vector<RecoveryAnswer> answers;
  for (const QComboBox* choice : choices_) answers.push_back(RecoveryAnswer(choice->currentData().toInt()));
  return answers;
}

}  // namespace orvanel
