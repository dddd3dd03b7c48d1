// Interface to all alerts, dialogs and file panels, so that tests can answer them. Main thread only; each
// call returns when the user has answered, unless it says otherwise.
#pragma once

#include <QCoreApplication>
#include <QString>
#include <QStringList>
#include <optional>
#include <vector>

#include "model/Document.h"
#include "recovery/Orphan.h"

namespace orvanel {

struct ShortcutGroup;

enum class SaveAnswer { save, dontSave, cancel };
enum class OverwriteAnswer { saveAnyway, saveAs, cancel };
enum class RecoveryAnswer { restore, discard, later };

// The user's input, not yet validated.

struct NewDocumentEntry {
  QString width;
  QString height;
  /// Raw value of the colour mode.
  int colorModeIndex = 0;
};

struct CanvasSizeEntry {
  QString width;
  QString height;
  /// Whether the numbers are added to the current size.
  bool isRelative = false;
  // -1 is left or top, 0 the centre, 1 right or bottom.
  int anchorX = 0;
  int anchorY = 0;
};

struct ImageSizeEntry {
  QString width;
  QString height;
  /// Value of a `ResampleMethod`.
  int resampleMethod = 0;
};

struct ExportTarget {
  QString path;
  /// Index into `exportFormats`.
  int formatRow = 0;
};

class Dialogs {
  Q_DECLARE_TR_FUNCTIONS(orvanel::Dialogs)

 public:
  Dialogs() = default;
  Dialogs(const Dialogs&) = delete;
  Dialogs& operator=(const Dialogs&) = delete;
  virtual ~Dialogs() = default;

  /// Shows a warning with an OK button.
  virtual void showWarning(const QString& message, const QString& informativeText) = 0;
  /// Reports a refused edit. Call this from the event loop, not from within the edit.
  void showNotEnoughMemory(const QString& informativeText) {
    showWarning(tr("Not Enough Memory"), informativeText);
  }
  /// Reports a size that no canvas can have.
  void showInvalidDimensions() {
    showWarning(tr("Invalid Dimensions"), tr("Width and height must be between 1 and 16384 pixels."));
  }
  virtual SaveAnswer askToSave(const QString& message, const QString& informativeText) = 0;
  /// Asks what to do about a file that another program has changed or removed. Cancels if it can't ask.
  virtual OverwriteAnswer askToOverwrite(const QString& message, const QString& informativeText) = 0;
  /// Asks what to do with each document that an earlier process left unsaved; one answer for each.
  virtual std::vector<RecoveryAnswer> askAboutOrphans(const OrphanList& orphans) = 0;
  virtual std::optional<NewDocumentEntry> askForNewDocument() = 0;
  virtual std::optional<CanvasSizeEntry> askForCanvasSize(const DocumentPtr& document) = 0;
  virtual std::optional<ImageSizeEntry> askForImageSize(const DocumentPtr& document) = 0;
  /// Starts in `folder`.
  virtual QStringList askForFilesToOpen(const QString& folder) = 0;
  /// Starts with the folder and name of `proposedPath`. The result ends in ".tessel".
  virtual std::optional<QString> askWhereToSave(const QString& proposedPath) = 0;
  /// Starts with the folder and name of `proposedBase`, which has no extension.
  virtual std::optional<ExportTarget> askWhereToExport(const QString& proposedBase) = 0;
  // Windows that don't block the others; these calls return at once.
  virtual void showAbout() = 0;
  virtual void showShortcuts(const std::vector<ShortcutGroup>& groups) = 0;
  /// Says that a command has nothing to do.
  virtual void beep() = 0;
};

}  // namespace orvanel
