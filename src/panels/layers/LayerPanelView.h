// The layer panel: the tree of the document's nodes with a bar of buttons below it, and in another tab the
// list of its channels. Owned by the window, which gives it the active document. Main thread only.
#pragma once

#include <QUuid>
#include <QWidget>
#include <functional>

#include "model/Document.h"
#include "model/ThumbnailManager.h"

class QAbstractButton;
class QStackedWidget;

namespace orvanel {

class ChannelListView;
class LayerNSOutlineView;
class PanelTabBar;
class SymbolButton;

class LayerPanelView : public QWidget {
  Q_OBJECT

 public:
  enum class Tab { layers, channels };

  explicit LayerPanelView(QWidget* parent = nullptr);
  ~LayerPanelView() override;

  std::function<void()> onAddLayer;
  std::function<void()> onAddFolder;
  std::function<void(const QUuid&)> onDeleteNode;

  /// Null for an empty panel. Documents aren't kept alive.
  void setDocument(const DocumentPtr& document);
  [[nodiscard]] DocumentPtr document() const { return document_.lock(); }
  /// The edge of the thumbnails, in view points.
  void setThumbnailSize(int viewPoints);

  [[nodiscard]] Tab tab() const;
  void setTab(Tab tab);

  [[nodiscard]] LayerNSOutlineView& outline() const { return *outline_; }
  [[nodiscard]] ChannelListView& channels() const { return *channels_; }
  [[nodiscard]] QAbstractButton* addLayerButton() const;
  [[nodiscard]] QAbstractButton* addFolderButton() const;
  [[nodiscard]] QAbstractButton* maskButton() const;
  [[nodiscard]] QAbstractButton* deleteButton() const;

 protected:
  void showEvent(QShowEvent* event) override;
  void hideEvent(QHideEvent* event) override;
  void paintEvent(QPaintEvent* event) override;

 private:
  QWidget* makeBar();
  SymbolButton* addButton(const QString& symbol, const QString& name, const QString& help);
  void follow(const DocumentChanges& changes);
  void updateButtons();
  void toggleMask() const;
  /// Thumbnails are made only while the panel shows them.
  void updateViewing();

  std::weak_ptr<Document> document_;
  ChangeStream::Subscription changes_;
  ThumbnailManager::Hold viewing_;
  PanelTabBar* tabs_;
  QStackedWidget* pages_;
  LayerNSOutlineView* outline_;
  ChannelListView* channels_;
  QWidget* bar_ = nullptr;
  SymbolButton* addLayerButton_ = nullptr;
  SymbolButton* addFolderButton_ = nullptr;
  SymbolButton* maskButton_ = nullptr;
  SymbolButton* deleteButton_ = nullptr;
};

}  // namespace orvanel
