// The channels of a document's composite, one row each: their pictures, and the eyes that say what the canvas
// shows of them. It follows the document's stream of changes. Owned by the channel list; main thread only.
#pragma once

#include <QAbstractListModel>

#include "model/Document.h"

namespace orvanel {

class ChannelTableModel : public QAbstractListModel {
  Q_OBJECT

 public:
  explicit ChannelTableModel(QObject* parent = nullptr) : QAbstractListModel(parent) {}

  /// Null for no document. Documents aren't kept alive.
  void setDocument(const DocumentPtr& document);
  [[nodiscard]] DocumentPtr document() const { return document_.lock(); }

  /// Null if it isn't made yet.
  [[nodiscard]] Thumbnail thumbnailOf(int row) const;
  [[nodiscard]] bool isVisible(int row) const;

  void setVisible(int row, bool isVisible) const;
  /// The eye: the first row turns all lanes off when all are on, and otherwise on; the others flip their own.
  void toggleVisibility(int row) const;
  /// What `toggleVisibility` makes of the row's visibility.
  [[nodiscard]] bool toggled(int row) const;
  /// Shows this channel alone, or all of them in the row of the colour image.
  void showAlone(int row) const;
  void loadAsSelection(int row) const;

  [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
  bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;
  [[nodiscard]] Qt::ItemFlags flags(const QModelIndex& index) const override;

 private:
  void follow(const DocumentChanges& changes);
  [[nodiscard]] QString nameOf(int row) const;
  [[nodiscard]] ChannelVisibility visibility() const;
  /// These rows' eyes, if they are new.
  void noteVisibility();

  std::weak_ptr<Document> document_;
  ChangeStream::Subscription changes_;
  int rows_ = 0;
  /// As it was shown last.
  ChannelVisibility shown_;
};

}  // namespace orvanel
