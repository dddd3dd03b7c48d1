// An edit that stays open while the user experiments: a drag, a free transform, an adjustment. Its document
// knows it, and ends it before changing anything it depends on. At most one is open on the document's
// surfaces, one on its selection and one on the properties of its nodes: a new one ends the one before. Owned
// by the tool, panel or script that performs it; main thread only.
#pragma once

#include <QString>
#include <functional>
#include <memory>
#include <optional>

#include "model/Document.h"
#include "model/ThumbnailManager.h"

namespace orvanel {

class DocumentEdit;
enum class EndsOpenEdits;

class OpenEdit {
 public:
  OpenEdit(const OpenEdit&) = delete;
  OpenEdit& operator=(const OpenEdit&) = delete;
  /// Derived classes end the edit while it is open.
  virtual ~OpenEdit();

  /// False once it was kept, taken back or ended, or its document was closed. All operations on a closed edit
  /// do nothing.
  [[nodiscard]] bool isOpen() const { return isOpen_ && !document_.expired(); }
  /// Whether it shows anything but the original.
  [[nodiscard]] bool hasShown() const { return hasShown_; }
  /// The name of the record that would keep it.
  [[nodiscard]] const QString& actionName() const { return actionName_; }
  /// Whether keeping it marks the document as unsaved.
  [[nodiscard]] bool isUnsavedChange() const { return ground_ != Ground::selection; }

  /// Ends the edit as a change of tool does: keeps what it shows under a record, or leaves none if nothing
  /// changed.
  virtual void end() = 0;
  /// Writes what the edit shows to the document's surfaces; it stays open.
  virtual void settle() {}
  [[nodiscard]] virtual bool isSettled() const { return true; }
  /// How it shows a surface that it hasn't written yet.
  [[nodiscard]] virtual std::optional<ShownSurface> shown(const Layer& /*layer*/,
                                                          SurfaceKind /*kind*/) const {
    return std::nullopt;
  }

  /// Called once when the edit closes, whoever closes it; must not destroy the edit.
  std::function<void()> onClosed;

 protected:
  enum class Ground { surfaces, selection, properties };

  OpenEdit(const DocumentPtr& document, Ground ground, QString actionName);
  /// Null once the edit is closed.
  [[nodiscard]] DocumentPtr document() const { return isOpen_ ? document_.lock() : nullptr; }
  /// To be called by each step: whether the edit now shows something. Tells when that changes.
  void noteShown(DocumentEdit& edit, bool isShown);
  /// Observers hear of it and may destroy the edit, unless a `DocumentEdit` of the caller is still alive.
  void close();
  /// Counts as continuous editing until the edit is closed.
  void holdThumbnailsBack();

 private:
  friend class DocumentEdit;
  [[nodiscard]] static EndsOpenEdits onTheSameGround(Ground ground);
  static void endAll(Document& document, EndsOpenEdits which);

  std::weak_ptr<Document> document_;
  Ground ground_;
  QString actionName_;
  bool isOpen_ = true;
  bool hasShown_ = false;
  bool isEndedByDocument_ = false;
  ThumbnailManager::Hold continuousEditing_;
};

}  // namespace orvanel
