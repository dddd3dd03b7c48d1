// The open documents in tab order, the active one, and their most-recently-used order. Owned by the
// application state; main thread only. Observers are notified only when a value really changes.
#pragma once

#include <QProperty>
#include <QString>
#include <QUuid>
#include <functional>
#include <map>
#include <optional>
#include <vector>

#include "model/Document.h"
#include "raster/MetalContext.h"
#include "tools/DocumentNotifications.h"
#include "tools/ToolState.h"

namespace orvanel {

class WindowState {
 public:
  WindowState(ToolState& toolState, MetalContext& context) : toolState_(toolState), context_(context) {}
  WindowState(const WindowState&) = delete;
  WindowState& operator=(const WindowState&) = delete;

  const QUuid id = QUuid::createUuid();
  /// Tab order; new documents come last.
  QProperty<std::vector<DocumentPtr>> documents;
  QProperty<std::optional<QUuid>> activeDocumentID;
  /// The id of every open document exactly once, most recently used first.
  QProperty<std::vector<QUuid>> mruOrder;

  /// Waits for a document's saves before it closes, because a failed save leaves it dirty.
  std::function<void(const Document&)> settleSaves;
  /// Decides whether a dirty document may close, usually by asking the user. If empty, it may.
  std::function<bool(const DocumentPtr&)> confirmClosing;

  /// Null without an active document.
  [[nodiscard]] DocumentPtr activeDocument() const;
  [[nodiscard]] DocumentPtr findDocument(const QUuid& documentID) const;

  /// Adds a new document called `name`, with the first free number from 2 appended if that is taken.
  void createDocument(const QString& name, int width, int height, ColorMode colorMode);
  /// Adds "Untitled" with the size and mode of the active document, or 1024 x 768 in 16-bit RGB.
  void createUntitledDocument();
  /// Adds an existing document without renaming it.
  void addDocument(const DocumentPtr& document);
  void switchToDocument(const QUuid& documentID);
  /// Leaves no document active while the window shows something else in their place.
  void setAsideActiveDocument();

  /// Activates the previously used document, so repeating it alternates between two. False with fewer than
  /// two.
  bool cycleNextDocument();
  /// Activates the least recently used document, so repeating it visits all. False with fewer than two.
  bool cyclePreviousDocument();
  /// Activate the neighbour in tab order, wrapping around. False if there is none.
  bool cycleNextTab();
  bool cyclePreviousTab();
  void promoteToMRUFront(const QUuid& documentID);

  // Closing. If the user refuses for one document, all stay open.
  void closeDocument(const QUuid& documentID);
  void closeAllDocuments();
  void closeOtherDocuments(const QUuid& keptID);
  /// Asks about all dirty documents in tab order without closing any, but not about those that `isGivenUp`.
  /// False at the first refusal.
  bool confirmAll(const std::function<bool(const Document&)>& isGivenUp = {});

 private:
  enum class CycleTarget { secondNewest, oldest };

  [[nodiscard]] QString uniqueDocumentName(const QString& base) const;
  bool cycleDocuments(CycleTarget direction);
  bool cycleTabs(int step);
  bool mayClose(const DocumentPtr& document);
  void adoptActiveDocument() { toolState_.switchToDocument(activeDocument()); }
  void removeDocument(const QUuid& documentID);

  ToolState& toolState_;
  MetalContext& context_;
  std::map<QUuid, DocumentNotifications> notifications_;
};

}  // namespace orvanel
