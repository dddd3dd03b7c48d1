// The open documents in tab order, which of them is active, and the order in which they were last used.
// Owned by the application state; main thread only. Writing a new value notifies observers, writing an
// equal one nobody.
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
  /// Every open document's id exactly once, the most recently used first.
  QProperty<std::vector<QUuid>> mruOrder;

  /// Lets running saves come to their end before a document is judged: one that fails leaves it unsaved.
  std::function<void(const Document&)> settleSaves;
  /// Says whether a document with unsaved changes may go, after asking. Without it, any may.
  std::function<bool(const DocumentPtr&)> confirmClosing;

  /// Null without an active document.
  [[nodiscard]] DocumentPtr activeDocument() const;
  [[nodiscard]] DocumentPtr findDocument(const QUuid& documentID) const;

  /// Adds a new document under `name`, or under `name` with the first free number from 2.
  void createDocument(const QString& name, int width, int height, ColorMode colorMode);
  /// "Untitled", in size and mode like the active document, or 1024 by 768 in 16-bit colour.
  void createUntitledDocument();
  /// Adds a finished document under the name it has.
  void addDocument(const DocumentPtr& document);
  void switchToDocument(const QUuid& documentID);

  /// Goes to the one used before this, so that repeating it alternates between two. False below two.
  bool cycleNextDocument();
  /// Goes to the one used longest ago, so that repeating it walks through all. False below two.
  bool cyclePreviousDocument();
  /// The neighbour in tab order, around the ends. False when no switch happened.
  bool cycleNextTab();
  bool cyclePreviousTab();
  void promoteToMRUFront(const QUuid& documentID);

  // Closing; a refusal leaves everything open.
  void closeDocument(const QUuid& documentID);
  void closeAllDocuments();
  void closeOtherDocuments(const QUuid& keptID);
  /// Asks about all documents in tab order without closing any. False at the first refusal.
  bool confirmAll();

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
