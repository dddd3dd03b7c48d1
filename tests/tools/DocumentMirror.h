// A second document, built only from the first one's stream of changes and the state these changes refer to.
// Any unreported change makes the two differ.
#pragma once

#include <cstddef>
#include <map>
#include <memory>
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
  /// How often the document has reported an undo or redo.
  [[nodiscard]] int historySteps() const { return historySteps_; }

 private:
  /// A surface as it is written, and as an open edit has shown it if one has since the surface came.
  struct Picture {
    std::optional<Surface> written;
    std::optional<Surface> shown = std::nullopt;
  };
  struct Mask {
    Picture picture;
    bool isEnabled = true;
  };
  struct Thumbnails {
    Thumbnail image;
    bool isDirty = true;
    Thumbnail mask;
    bool isMaskDirty = true;
    std::vector<Thumbnail> channels;
    bool areChannelsDirty = true;
    friend bool operator==(const Thumbnails&, const Thumbnails&) = default;
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
    std::optional<Picture> picture = std::nullopt;
    std::optional<Mask> mask = std::nullopt;
    Thumbnails thumbnails = {};
    std::vector<QUuid> children = {};
  };
  struct History {
    std::vector<QString> names;
    std::int64_t index = -1;
    friend bool operator==(const History&, const History&) = default;
  };
  /// What the next undo and redo are called, which an open edit changes as well as the history.
  struct Steps {
    std::optional<QString> undo;
    std::optional<QString> redo;
    friend bool operator==(const Steps&, const Steps&) = default;
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
    std::optional<QString> source;
    std::optional<Document::ImageFileFormat> format;
    std::shared_ptr<const SourceMetadata> metadata;
    friend bool operator==(const File&, const File&) = default;
  };

  void follow(const DocumentChanges& changes);
  void follow(const change::NodeInserted& inserted);
  void follow(const change::NodeRemoved& removed);
  void follow(const change::NodeMoved& moved);
  void follow(const change::NodePropertyChanged& changed);
  void follow(const change::PixelsChanged& changed);
  void follow(const change::PreviewChanged& changed);
  void follow(const change::OpenEditChanged&);
  void follow(const change::SelectionChanged& changed);
  void follow(const change::CanvasChanged&);
  void follow(const change::ActiveNodeChanged&);
  void follow(const change::ViewChanged& changed);
  void follow(const change::HistoryChanged&);
  void follow(const change::HistoryStepped&) { ++historySteps_; }
  void follow(const change::FileStateChanged& changed);
  void follow(const change::Composited&);
  void follow(const change::ThumbnailsChanged& changed);
  /// The document is unchanged.
  static void follow(const change::EditRefused&) {}

  std::vector<QUuid>& listAt(const std::optional<QUuid>& parentID);
  void takeOut(const QUuid& nodeID, const TreePosition& position);
  void putIn(const QUuid& nodeID, const TreePosition& position);
  void forget(const QUuid& nodeID);
  [[nodiscard]] Picture& pictureAt(const QUuid& layerID, SurfaceKind kind);
  [[nodiscard]] Picture pictureOf(const Layer& layer, SurfaceKind kind) const;
  [[nodiscard]] std::optional<Mask> maskOf(const Layer& layer) const;
  [[nodiscard]] static Thumbnails thumbnailsOf(const Layer& layer);
  [[nodiscard]] static History historyOf(const Document& document);
  [[nodiscard]] static Steps stepsOf(const Document& document);
  [[nodiscard]] static View viewOf(const Document& document);
  [[nodiscard]] static File fileOf(const Document& document);
  /// Whether the surface is written and shown as the mirror knows it.
  [[nodiscard]] bool isAsMirrored(const Layer& layer, SurfaceKind kind, const Picture& picture) const;
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
  Steps steps_;
  bool hasOpenUnsavedChange_ = false;
  int historySteps_ = 0;
  View view_;
  File file_;
  std::optional<Surface> composite_;
  Thumbnail compositeThumbnail_;
  std::vector<Thumbnail> compositeChannels_;
  std::size_t changes_ = 0;
  ChangeStream::Subscription subscription_;
};

}  // namespace orvanel::test
