#include "panels/layers/LayerRowDelegate.h"

#include <QLineEdit>
#include <QPainter>
#include <algorithm>

#include "look/Look.h"
#include "panels/layers/CornerBrackets.h"

namespace orvanel {

/// A row about to be painted.
struct LayerRowDelegate::Row {
  const QStyleOptionViewItem& option;
  const QModelIndex& index;
  const LayerNode& node;
  const LayerRowLayout& layout;
};

LayerRowDelegate::LayerRowDelegate(const LayerTreeModel& model, const LayerRowPointer& pointer,
                                   QObject* parent)
    : QStyledItemDelegate(parent), model_(model), pointer_(pointer) {}

std::optional<LayerRowLayout> LayerRowDelegate::layoutOf(const QModelIndex& index, const QRect& row) const {
  const std::optional<LayerNode> node = model_.nodeOf(index);
  if (!node) return std::nullopt;
  return LayerRowLayout(row, *node, LayerTreeModel::depthOf(index), thumbnailSize_);
}

QString LayerRowDelegate::cutOffName(const QModelIndex& index, const QRect& row) const {
  const std::optional<LayerRowLayout> layout = layoutOf(index, row);
  if (!layout) return {};
  const QString name = model_.nodeOf(index)->name().value();
  const QString shown = index.data().toString();
  const bool fits = QFontMetrics(look::font()).horizontalAdvance(shown) <= layout->name.width();
  return fits && shown == name ? QString() : name;
}

QSize LayerRowDelegate::sizeHint(const QStyleOptionViewItem& /*option*/, const QModelIndex& /*index*/) const {
  return {0, LayerRowLayout::rowHeight(thumbnailSize_)};
}

// Painting.

void LayerRowDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                             const QModelIndex& index) const {
  const std::optional<LayerNode> node = model_.nodeOf(index);
  const std::optional<LayerRowLayout> layout = layoutOf(index, option.rect);
  if (!node || !layout) return;
  const Row row{option, index, *node, *layout};
  painter->save();
  painter->setRenderHint(QPainter::Antialiasing);
  paintRowBackground(*painter, option.rect, option.state);

  painter->setOpacity(node->isVisible().value() ? 1.0 : hiddenEyeOpacity);
  paintRowButton(*painter, layout->visibility, QStringLiteral("pixel/eye"), look::color::symbol,
                 stateOf(row, LayerRowPart::visibility));
  painter->setOpacity(1.0);
  if (node->layer() != nullptr) {
    paintThumbnails(*painter, row);
  } else {
    paintFolder(*painter, row);
  }
  paintName(*painter, row);
  const bool isLocked = node->isLocked().value();
  paintRowButton(*painter, layout->lock, isLocked ? QStringLiteral("lock") : QStringLiteral("lock.open"),
                 isLocked ? look::color::symbol : look::color::disabledText,
                 stateOf(row, LayerRowPart::lock));
  if (option.state.testFlag(QStyle::State_HasFocus)) paintRowFocus(*painter, option.rect);
  painter->restore();
}

RowButtonState LayerRowDelegate::stateOf(const Row& row, LayerRowPart part) const {
  if (pointer_.part != part || pointer_.row != row.index) return RowButtonState::plain;
  return pointer_.isPressed ? RowButtonState::pressed : RowButtonState::hovered;
}

void LayerRowDelegate::paintThumbnails(QPainter& painter, const Row& row) const {
  const Layer& layer = *row.node.layer();
  const std::shared_ptr<LayerMask>& mask = layer.mask.value();
  const QRect picture = ThumbnailPainter::fitted(layer.thumbnailImage.value(), row.layout.thumbnail);
  thumbnails_.paint(painter, layer.thumbnailImage.value(), picture);
  QRect edited = picture;
  if (mask != nullptr) {
    const bool isLinked = layer.isMaskLinked.value();
    paintRowButton(
        painter, row.layout.chain, isLinked ? QStringLiteral("link") : QStringLiteral("link.badge.plus"),
        isLinked ? look::color::symbol : look::color::disabledText, stateOf(row, LayerRowPart::chain));
    const Thumbnail& shown = layer.maskThumbnailImage.value();
    const QRect maskPicture = ThumbnailPainter::fitted(shown, row.layout.maskThumbnail);
    thumbnails_.paint(painter, shown, maskPicture);
    if (!mask->isEnabled.value()) {
      painter.setPen(QPen(look::color::alert, look::size::focusRing));
      painter.drawLine(maskPicture.topLeft(), maskPicture.bottomRight());
      painter.drawLine(maskPicture.topRight(), maskPicture.bottomLeft());
    }
    if (layer.editsMask()) edited = maskPicture;
  }
  if (row.option.state.testFlag(QStyle::State_Selected)) paintCornerBrackets(painter, edited);
}

void LayerRowDelegate::paintFolder(QPainter& painter, const Row& row) const {
  const bool isExpanded = row.node.folder()->isExpanded.value();
  paintRowButton(painter, row.layout.disclosure,
                 isExpanded ? QStringLiteral("chevron.down") : QStringLiteral("chevron.right"),
                 look::color::symbol, stateOf(row, LayerRowPart::disclosure));
  paintRowButton(painter, row.layout.icon,
                 isExpanded ? QStringLiteral("folder.fill") : QStringLiteral("folder"), look::color::symbol,
                 RowButtonState::plain);
}

void LayerRowDelegate::paintName(QPainter& painter, const Row& row) const {
  painter.setFont(look::font());
  painter.setPen(row.node.isVisible().value() ? look::color::text : look::color::secondaryText);
  const QString name =
      painter.fontMetrics().elidedText(row.index.data().toString(), Qt::ElideMiddle, row.layout.name.width());
  painter.drawText(row.layout.name, Qt::AlignVCenter | Qt::AlignLeft | Qt::TextSingleLine, name);
}

// Editing a name.

QWidget* LayerRowDelegate::createEditor(QWidget* parent, const QStyleOptionViewItem& /*option*/,
                                        const QModelIndex& /*index*/) const {
  auto* field = new QLineEdit(parent);
  field->setFont(look::font());
  field->setAccessibleName(tr("Name"));
  return field;
}

void LayerRowDelegate::setEditorData(QWidget* editor, const QModelIndex& index) const {
  auto* field = qobject_cast<QLineEdit*>(editor);
  // Called again whenever the row changes, which must undo neither what is being typed nor what is selected.
  constexpr auto shownName = "shownName";
  const QVariant name = index.data(Qt::EditRole);
  if (field == nullptr || field->isModified() || field->property(shownName) == name) return;
  field->setProperty(shownName, name);
  field->setText(name.toString());
}

void LayerRowDelegate::setModelData(QWidget* editor, QAbstractItemModel* model,
                                    const QModelIndex& index) const {
  const auto* field = qobject_cast<QLineEdit*>(editor);
  // A field can't hold every name, so what nobody touched isn't written.
  if (field != nullptr && field->isModified()) model->setData(index, field->text());
}

void LayerRowDelegate::updateEditorGeometry(QWidget* editor, const QStyleOptionViewItem& option,
                                            const QModelIndex& index) const {
  const std::optional<LayerRowLayout> layout = layoutOf(index, option.rect);
  if (!layout) return;
  // Names next to two thumbnails have little room; the field may cover them.
  constexpr int narrowestField = 128;
  const int right = layout->lock.left() + layout->lock.width();
  const int left = std::min(layout->name.left() - look::space::tight, right - narrowestField);
  QRect place(left, 0, right - left, look::size::control);
  place.moveTop(option.rect.top() + (option.rect.height() - place.height()) / 2);
  editor->setGeometry(place);
}

}  // namespace orvanel
