#include "panels/channels/ChannelTableModel.h"

#include <utility>

namespace orvanel {

namespace {

constexpr ChannelVisibility allOn{};
constexpr ChannelVisibility allOff{.red = 0, .green = 0, .blue = 0};

/// The row of the whole image; the colours follow in order.
constexpr int imageRow = 0;
constexpr int imageChannel = 3;

int rowsOf(ColorMode mode) {
  return isGrayscale(mode) ? 1 : 4;
}

std::int32_t& lane(ChannelVisibility& visibility, int row) {
  return row == 1 ? visibility.red : row == 2 ? visibility.green : visibility.blue;
}

/// What the eye of a row says.
bool showsRow(ChannelVisibility visibility, int row, bool isGray) {
  if (row == imageRow) return isGray ? visibility.red != 0 : visibility == allOn;
  return lane(visibility, row) != 0;
}

}  // namespace

void ChannelTableModel::setDocument(const DocumentPtr& document) {
  beginResetModel();
  document_ = document;
  changes_ = {};
  rows_ = document != nullptr ? rowsOf(document->colorMode.value()) : 0;
  shown_ = visibility();
  if (document != nullptr) {
    changes_ = document->changes().observe([this](const DocumentChanges& changes) { follow(changes); });
  }
  endResetModel();
}

void ChannelTableModel::follow(const DocumentChanges& changes) {
  const DocumentPtr document = document_.lock();
  if (document == nullptr) return;
  const int rows = rowsOf(document->colorMode.value());
  if (rows != rows_) {
    beginResetModel();
    rows_ = rows;
    shown_ = visibility();
    endResetModel();
    return;
  }
  for (const DocumentChange& change : changes) {
    const auto* thumbnails = std::get_if<change::ThumbnailsChanged>(&change);
    if (thumbnails == nullptr || thumbnails->layerID) continue;
    Q_EMIT dataChanged(index(0), index(rows_ - 1), {Qt::DecorationRole});
  }
  if (containsAny<change::ViewChanged>(changes, ViewProperty::channelVisibility)) noteVisibility();
}

void ChannelTableModel::noteVisibility() {
  const ChannelVisibility before = std::exchange(shown_, visibility());
  for (int row = 0; row < rows_; ++row) {
    const bool isGray = rows_ == 1;
    if (showsRow(before, row, isGray) == showsRow(shown_, row, isGray)) continue;
    Q_EMIT dataChanged(index(row), index(row), {Qt::CheckStateRole});
  }
}

ChannelVisibility ChannelTableModel::visibility() const {
  const DocumentPtr document = document_.lock();
  return document != nullptr ? document->channelVisibility.value() : allOn;
}

// Rows.

int ChannelTableModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : rows_;
}

QString ChannelTableModel::nameOf(int row) const {
  if (rows_ == 1) return tr("White");
  switch (row) {
    case imageRow:
      return tr("RGB");
    case 1:
      return tr("Red");
    case 2:
      return tr("Green");
    default:
      return tr("Blue");
  }
}

Thumbnail ChannelTableModel::thumbnailOf(int row) const {
  const DocumentPtr document = document_.lock();
  if (document == nullptr) return nullptr;
  if (rows_ > 1 && row == imageRow) return document->compositeThumbnailImage.value();
  const std::vector<Thumbnail>& channels = document->compositeChannelThumbnails.value();
  const auto channel = static_cast<std::size_t>(rows_ == 1 ? 0 : row - 1);
  return channel < channels.size() ? channels[channel] : nullptr;
}

bool ChannelTableModel::isVisible(int row) const {
  return showsRow(visibility(), row, rows_ == 1);
}

QVariant ChannelTableModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid()) return {};
  if (role == Qt::DisplayRole) return nameOf(index.row());
  if (role == Qt::CheckStateRole) return isVisible(index.row()) ? Qt::Checked : Qt::Unchecked;
  if (role == Qt::AccessibleTextRole) {
    return isVisible(index.row()) ? tr("%1, visible").arg(nameOf(index.row()))
                                  : tr("%1, hidden").arg(nameOf(index.row()));
  }
  return {};
}

Qt::ItemFlags ChannelTableModel::flags(const QModelIndex& index) const {
  if (!index.isValid()) return {};
  return Qt::ItemIsEnabled | Qt::ItemIsUserCheckable | Qt::ItemNeverHasChildren;
}

// What the rows do.

bool ChannelTableModel::setData(const QModelIndex& index, const QVariant& value, int role) {
  if (!index.isValid() || role != Qt::CheckStateRole) return false;
  setVisible(index.row(), value.value<Qt::CheckState>() == Qt::Checked);
  return true;
}

void ChannelTableModel::setVisible(int row, bool isVisible) const {
  const DocumentPtr document = document_.lock();
  if (document == nullptr) return;
  ChannelVisibility changed = isVisible ? allOn : allOff;
  if (row != imageRow) {
    changed = visibility();
    lane(changed, row) = isVisible ? 1 : 0;
  }
  document->setChannelVisibility(changed);
}

bool ChannelTableModel::toggled(int row) const {
  return !isVisible(row);
}

void ChannelTableModel::toggleVisibility(int row) const {
  setVisible(row, toggled(row));
}

void ChannelTableModel::showAlone(int row) const {
  const DocumentPtr document = document_.lock();
  if (document == nullptr) return;
  ChannelVisibility changed = row == imageRow ? allOn : allOff;
  if (row != imageRow) lane(changed, row) = 1;
  document->setChannelVisibility(changed);
}

void ChannelTableModel::loadAsSelection(int row) const {
  const DocumentPtr document = document_.lock();
  if (document == nullptr) return;
  const int color = rows_ == 1 ? 0 : row - 1;
  document->selectChannel(rows_ > 1 && row == imageRow ? imageChannel : color);
}

}  // namespace orvanel
