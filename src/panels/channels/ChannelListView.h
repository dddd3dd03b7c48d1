// The list of the composite's channels: eyes that show and hide them on the canvas, clicks that show one
// alone, and thumbnails that load a channel as the selection. Owned by the layer panel; main thread only.
#pragma once

#include <QListView>
#include <QPersistentModelIndex>
#include <optional>
#include <set>

#include "panels/channels/ChannelTableModel.h"
#include "panels/controls/ThumbnailPainter.h"

namespace orvanel {

class ChannelListView : public QListView {
  Q_OBJECT

 public:
  explicit ChannelListView(QWidget* parent = nullptr);

  void setDocument(const DocumentPtr& document);
  void setThumbnailSize(int viewPoints);
  [[nodiscard]] ChannelTableModel& channelModel() { return model_; }

  // Places in the viewport.
  [[nodiscard]] QRect eyeOf(int row) const;
  [[nodiscard]] QRect thumbnailOf(int row) const;
  [[nodiscard]] int rowHeight() const;

  /// Letters choose tools.
  void keyboardSearch(const QString& /*search*/) override {}

 protected:
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  /// A double click counts as two clicks.
  void mouseDoubleClickEvent(QMouseEvent* event) override { mousePressEvent(event); }
  void keyPressEvent(QKeyEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;
  bool viewportEvent(QEvent* event) override;

 private:
  class RowDelegate;
  /// Sets the eyes that the pointer enters to one value, each once.
  struct Sweep {
    bool isVisible = true;
    int lastRow = 0;
    std::set<int> swept = {};
  };

  /// On a picture that is there, not where one will be.
  [[nodiscard]] bool isOnThumbnail(int row, const QPoint& point) const;
  void sweepTo(const QPoint& point);
  void sweepOver(int row);
  void endSweep();
  void setHoveredRow(int row, bool isOnEye);
  bool showHelp(const QPoint& point, const QPoint& globalPoint);
  void paintRow(QPainter& painter, const QStyleOptionViewItem& option, int row);

  ChannelTableModel model_;
  ThumbnailPainter thumbnails_;
  int thumbnailSize_ = 48;
  std::optional<Sweep> sweep_;
  int hoveredRow_ = -1;
  bool isOnEye_ = false;
  /// The ring around the current row is for those who work with keys.
  bool isUsedByKeys_ = false;
};

}  // namespace orvanel
