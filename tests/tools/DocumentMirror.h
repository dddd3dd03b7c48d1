// A second document, built only from the first one's stream of changes and the state these changes refer to.
// Any unreported change makes the two differ.
#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "model/Document.h"

namespace orvanel::test {

class DocumentMirror {
 public:
  /// Begins with the whole document and follows it while both live.
  explicit DocumentMirror(const Document& followed);
  DocumentMirror(const DocumentMirror&) = delete;
  DocumentMirror& operator=(const DocumentMirror&) = delete;

  /// The first difference from the document's current state; empty if there is none.
  [[nodiscard]] std::string difference() const;
  [[nodiscard]] std::size_t changes() const { return changes_; }

 private:
  struct Mask {
    Surface pixels;
    bool isEnabled = true;
  };
  struct Node {
    bool isFolder = false;
    QString name = {};
    float opacity = 1.0F;
    BlendMode blendMode = BlendMode::normal;
    bool isVisible = true;
    bool isLocked = false;
    bool isExpanded = true;
    bool isMaskLinked = true;
    bool isMaskSelected = false;
    std::optional<Surface> pixels = std::nullopt;
    std::optional<Mask> mask = std::nullopt;
    std::vector<QUuid> children = {};
  };
  struct History {
    std::vector<QString> names;
    std::int64_t index = -1;
    friend bool operator==(const History&, const History&) = default;
  };
  struct View {
    double zoom = 1.0;
    QPointF offset;
    bool needsInitialZoom = true;
    std::optional<QPointF> cursor;
    std::optional<Document::DragSize> dragSize;
    Tool tool = Tool::hand;
    DisplayColor foreground;
    DisplayColor background;
    ChannelVisibility channels;
    friend bool operator==(const View&, const View&) = default;
  };
  struct File {
    QString name;
    bool isDirty = false;
    QString source;
    friend bool operator==(const File&, const File&) = default;
  };

  void follow(const DocumentChanges& changes);
  void follow(const change::NodeInserted& inserted);
  void follow(const change::NodeRemoved& removed);
  void follow(const change::NodeMoved& moved);
  void follow(const change::NodePropertyChanged& changed);
  void follow(const change::PixelsChanged& changed);
  void follow(const change::SelectionChanged& changed);
  void follow(const change::CanvasChanged&);
  void follow(const change::ActiveNodeChanged&);
  void follow(const change::ViewChanged& changed);
  void follow(const change::HistoryChanged&);
  void follow(const change::FileStateChanged& changed);
  template <typename Other>
  void follow(const Other&) {}

  std::vector<QUuid>& listAt(const std::optional<QUuid>& parentID);
  void takeOut(const QUuid& nodeID, const TreePosition& position);
  void putIn(const QUuid& nodeID, const TreePosition& position);
  void forget(const QUuid& nodeID);
  [[nodiscard]] static History historyOf(const Document& document);
  [[nodiscard]] static View viewOf(const Document& document);
  [[nodiscard]] std::string nodesDifference(const LayerNodeList& nodes, const std::vector<QUuid>& ids) const;
  [[nodiscard]] std::string nodeDifference(const LayerNode& real, const Node& node) const;

  const Document& followed_;
  std::map<QUuid, Node> nodes_;
  std::vector<QUuid> roots_;
  int width_ = 0;
  int height_ = 0;
  ColorMode mode_ = ColorMode::rgb8;
  std::optional<QUuid> active_;
  std::optional<Surface> selection_;
  Selection::Flags selectionFlags_;
  History history_;
  View view_;
  File file_;
  std::size_t changes_ = 0;
  ChangeStream::Subscription subscription_;
};

}  // namespace orvanel::test
