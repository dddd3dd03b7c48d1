// The recent files in the empty window: as many cards with picture and name as fit. Owned by the placeholder
// for the canvas; main thread only.
#pragma once

#include <QImage>
#include <QString>
#include <QWidget>
#include <functional>
#include <vector>

class QAbstractButton;

namespace orvanel {

struct RecentEntry {
  QString path;
  QString name;
  /// Null for a file without a picture.
  QImage picture;
  friend bool operator==(const RecentEntry&, const RecentEntry&) = default;
};

class RecentFilesView : public QWidget {
  Q_OBJECT

 public:
  explicit RecentFilesView(QWidget* parent = nullptr);

  std::function<void(const QString& path)> onOpen;

  void setEntries(const std::vector<RecentEntry>& entries);
  [[nodiscard]] const std::vector<QAbstractButton*>& cards() const { return cards_; }
  /// Shows the cards that fit into this size, row by row; the view gets the size that they take.
  void fitInto(const QSize& room);

 private:
  std::vector<QAbstractButton*> cards_;
};

}  // namespace orvanel
